#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The icons are drawn with strokes, round joins and arcs, which is how they are easy to
// edit. Parsing arcs and stroking round joins makes the app call the maths library's sine,
// cosine and arc tangent while it builds its first screen, for nothing but four small
// icons. So the modules ship each icon as its outline instead: every stroke and fill of
// the drawing turned into a filled path of lines and cubic curves, which draws the same
// pixels.
//
// The outline of the SVG icon at `drawnSvgPath`, as the text of an SVG file of the same size
// and view box that names `sourceName` as where it came from. Nothing, with `error` set,
// when the drawing cannot be read.
std::optional<QByteArray> TPOutlineIcon(const QString &drawnSvgPath, const QString &sourceName,
                                        QString *error);

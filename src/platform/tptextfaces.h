#pragma once

#include <QFont>
#include <QList>

class QString;

// Loads, on the calling thread, the font database and the engines that draw `fonts`. The
// first font also lays out `sample`, which loads whatever fallback faces its characters need
// (a colour emoji face for a row's mark, for instance).
//
// Qt keeps its font engines per thread, so only the GUI thread's own loading helps its texts.
// The launch calls this while the QML loader thread reads the first views, a time the GUI
// thread would otherwise spend waiting; the first texts laid out then find their engines
// loaded. Nothing is drawn and no font the app uses is changed.
void TPLoadTextFaces(const QList<QFont> &fonts, const QString &sample);

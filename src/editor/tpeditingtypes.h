#pragma once

#include "editing/tpfindreplace.h"

#include <QObject>
#include <QtQml/qqml.h>

// The editing room has no QML; the editor's views name these of its types.
struct TPFindReplaceForeign
{
    Q_GADGET
    QML_FOREIGN(TPFindReplace)
    QML_NAMED_ELEMENT(TPFindReplace)
    QML_UNCREATABLE("Owned by the code editor")
};

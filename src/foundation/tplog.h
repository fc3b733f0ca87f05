#pragma once

#include <QLoggingCategory>

// The app's two log categories. Both are silent by default and switched on with Qt's
// logging rules, for example QT_LOGGING_RULES="tp.*.info=true".
// tp.engine: one line per engine request (method, path, status, milliseconds, error).
Q_DECLARE_LOGGING_CATEGORY(tpEngineLog)
// tp.app: lifecycle events (launch, owner prompt, main interface, language).
Q_DECLARE_LOGGING_CATEGORY(tpAppLog)

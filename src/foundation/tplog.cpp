#include "foundation/tplog.h"

// Messages below a warning are off unless the logging rules turn them on. Nothing in the
// app logs these categories above info, so by default they say nothing.
Q_LOGGING_CATEGORY(tpEngineLog, "tp.engine", QtWarningMsg)
Q_LOGGING_CATEGORY(tpAppLog, "tp.app", QtWarningMsg)

#pragma once

#include <QtQml/qqmlextensionplugin.h>

// The app's QML modules are static libraries: a program that shows the app's screens
// includes this header once, in the file with its main(), so that every module is linked
// in and found by its import.
Q_IMPORT_QML_PLUGIN(TPAppPlugin)
Q_IMPORT_QML_PLUGIN(TPScriptsPlugin)
Q_IMPORT_QML_PLUGIN(TPEditorPlugin)
Q_IMPORT_QML_PLUGIN(TPSettingsPlugin)
Q_IMPORT_QML_PLUGIN(TPPlatformPlugin)

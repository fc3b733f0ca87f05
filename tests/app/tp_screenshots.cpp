// Renders every screen of the app, in Vietnamese and in English in the light appearance and
// in Vietnamese in the dark one, to the PNG files the README shows:
// tp-screenshots SAMPLES_DIR OUTPUT_DIR. Runs on the offscreen platform against a
// development engine serving a temporary copy of the sample scripts.
#include "app/tpqmlmodules.h"
#include "tpapptour.h"

#include <QDir>
#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QTest>

namespace {

// A tablet's window in landscape.
constexpr QSize kWideWindow(1024, 768);

// A platform palette as a phone in dark appearance gives it.
QPalette darkPlatformPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x1C, 0x1C, 0x1E));
    palette.setColor(QPalette::WindowText, Qt::white);
    palette.setColor(QPalette::Base, QColor(0x1C, 0x1C, 0x1E));
    palette.setColor(QPalette::Text, Qt::white);
    palette.setColor(QPalette::Button, QColor(0x2C, 0x2C, 0x2E));
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::Highlight, QColor(0x0A, 0x84, 0xFF));
    return palette;
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QGuiApplication::setOrganizationName(QStringLiteral("TPCompanionScreenshots"));
    QGuiApplication::setApplicationName(QStringLiteral("tp-screenshots"));
    QQuickStyle::setStyle(QStringLiteral("Basic"));

    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        qWarning("usage: tp-screenshots SAMPLES_DIR OUTPUT_DIR");
        return 2;
    }
    const QString output = arguments.at(2);
    QDir().mkpath(output);
    const QStringList wanted = {"first-run-prompt",
                                "scripts",
                                "add-sheet",
                                "editor",
                                "editor-syntax-error",
                                "editor-draft",
                                "history-files",
                                "history-versions",
                                "history-version",
                                "history-version-changes",
                                "scripts-undo-delete",
                                "alert",
                                "store",
                                "settings",
                                "settings-touch-debug",
                                "editor-outline",
                                "move-picker",
                                "quick-open-recent",
                                "quick-open",
                                "search-files"};

    const QStringList wideShots = {QStringLiteral("scripts"), QStringLiteral("settings")};
    TPAppTour tour;
    QString error;
    if (!tour.prepare(arguments.at(1), &error)) {
        qWarning("%s", qPrintable(error));
        return 1;
    }
    const QPalette lightPalette = QGuiApplication::palette();
    const QStringList runs = {QStringLiteral("vi"), QStringLiteral("en"),
                              QStringLiteral("vi-dark")};
    for (const QString &run : runs) {
        const bool dark = run.endsWith(QLatin1String("-dark"));
        const QString language = run.left(2);
        QGuiApplication::setPalette(dark ? darkPlatformPalette() : lightPalette);
        const auto shoot = [&](const QString &name) {
            if (!wanted.contains(name))
                return true;
            const QString path = QStringLiteral("%1/%2-%3.png").arg(output, run, name);
            if (!tour.window()->grabWindow().save(path)) {
                qWarning("cannot write %s", qPrintable(path));
                return false;
            }
            qInfo("wrote %s", qPrintable(path));
            // The list and the settings also as a tablet or desktop window shows them.
            if (!wideShots.contains(name))
                return true;
            QQuickWindow *window = tour.window();
            const QSize phone = window->size();
            window->resize(kWideWindow);
            const bool laidOut = QTest::qWaitFor(
                [window] { return window->contentItem()->width() == kWideWindow.width(); });
            const QString widePath = QStringLiteral("%1/%2-%3-wide.png").arg(output, run, name);
            const bool written = laidOut && window->grabWindow().save(widePath);
            window->resize(phone);
            if (!written || !QTest::qWaitFor([window, phone] {
                    return window->contentItem()->width() == phone.width();
                })) {
                qWarning("cannot write %s", qPrintable(widePath));
                return false;
            }
            qInfo("wrote %s", qPrintable(widePath));
            return true;
        };
        if (!tour.run(language, shoot, &error)) {
            qWarning("%s", qPrintable(error));
            return 1;
        }
    }
    return 0;
}

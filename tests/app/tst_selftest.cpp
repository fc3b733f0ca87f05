#include "appdelegate.h"
#include "tpapptour.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(TPCompanionPlugin)

namespace {

QStringList g_messages;
QtMessageHandler g_previousHandler = nullptr;

// Every warning while the app runs is a failure: QML reports its own problems this way.
void recordWarnings(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg &&
        !message.contains(QLatin1String("XDG_RUNTIME_DIR")))
        g_messages.append(message);
    g_previousHandler(type, context, message);
}

// The items each stop must show, by object name.
const QHash<QString, QStringList> kExpectedItems = {
    {"first-run-prompt", {"alertBox", "alertTextField", "alertAction0"}},
    {"scripts", {"scriptsList", "row0", "addButton", "refreshButton"}},
    {"folder", {"scriptsList", "row0", "backButton"}},
    {"add-sheet", {"sheet", "sheetAction0", "sheetAction1"}},
    {"new-folder-prompt", {"alertBox", "alertTextField", "alertAction1"}},
    {"editor",
     {"editor", "saveButton", "runButton", "backButton", "gutter", "undoButton", "redoButton",
      "findButton", "wrapButton"}},
    {"editor-syntax-error", {"editor", "gutter", "syntaxMessage", "syntaxMessageBar"}},
    {"alert", {"alertBox", "alertAction0"}},
    {"store", {"storeLabel"}},
    {"settings", {"settingsTable", "switch4", "segments_langCell", "segments_segCell"}},
    {"settings-touch-debug", {"swatch0", "swatch7", "slider"}},
    {"settings-other-language", {"settingsTable"}},
    {"scripts-again", {"scriptsList"}},
};

bool isShown(QQuickItem *item)
{
    for (QQuickItem *it = item; it; it = it->parentItem()) {
        if (!it->isVisible())
            return false;
    }
    return item->width() > 0 && item->height() > 0;
}

// The first item of that object name in the visual tree that is on screen, or null.
// Delegates of repeaters and lists are found only this way, not among QObject children.
QQuickItem *findShownItem(QQuickItem *root, const QString &name)
{
    if (root->objectName() == name && isShown(root))
        return root;
    for (QQuickItem *child : root->childItems()) {
        if (QQuickItem *found = findShownItem(child, name))
            return found;
    }
    return nullptr;
}

} // namespace

// The real app on the offscreen platform: every QML file compiles, every screen shows, and
// nothing warns along the way.
class TestSelfTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QQuickStyle::setStyle(QStringLiteral("Basic"));
        g_previousHandler = qInstallMessageHandler(recordWarnings);
    }
    void init() { g_messages.clear(); }

    void everyQmlFileCompiles()
    {
        QQmlEngine engine;
        QStringList files;
        QDirIterator it(QStringLiteral(":/TPCompanion"), {QStringLiteral("*.qml")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            files.append(it.next());
        QVERIFY2(files.size() >= 15, qPrintable(files.join(u' ')));
        for (const QString &file : std::as_const(files)) {
            QFile source(file);
            QVERIFY(source.open(QIODevice::ReadOnly));
            QQmlComponent component(&engine);
            if (source.readAll().contains("pragma Singleton")) {
                // A singleton is used, not instantiated: reach it through the module.
                const QString name = QFileInfo(file).baseName();
                component.setData(
                    QStringLiteral("import QtQml\nQtObject { property var probe: %1 }")
                        .arg(name)
                        .toUtf8(),
                    QUrl(QStringLiteral("qrc:/TPCompanion/SingletonProbe.qml")));
                std::unique_ptr<QObject> probe(component.create());
                QVERIFY2(probe && probe->property("probe").value<QObject *>(),
                         qPrintable(file + u' ' + component.errorString()));
                continue;
            }
            component.loadUrl(QUrl(QStringLiteral("qrc") + file));
            QVERIFY2(component.isReady(), qPrintable(file + u' ' + component.errorString()));
        }
        QVERIFY2(g_messages.isEmpty(), qPrintable(g_messages.join(u'\n')));
    }

    void everyScreenShowsWithoutWarnings_data()
    {
        QTest::addColumn<QString>("language");
        QTest::newRow("vi") << "vi";
        QTest::newRow("en") << "en";
    }
    void everyScreenShowsWithoutWarnings()
    {
        QFETCH(QString, language);
        TPAppTour tour;
        QString error;
        QVERIFY2(tour.prepare(QStringLiteral(TP_SAMPLES_DIR), &error), qPrintable(error));
        QStringList visited;
        QStringList problems;
        const auto check = [&](const QString &stop) {
            visited.append(stop);
            for (const QString &name : kExpectedItems.value(stop)) {
                QQuickItem *item = findShownItem(tour.window()->contentItem(), name);
                if (!item)
                    problems.append(stop + QStringLiteral(": ") + name +
                                    QStringLiteral(" not shown"));
            }
            for (const QString &message : std::as_const(g_messages))
                problems.append(stop + QStringLiteral(": ") + message);
            g_messages.clear();
            return problems.isEmpty();
        };
        const bool walked = tour.run(language, check, &error);
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
        QVERIFY2(walked, qPrintable(error));
        QCOMPARE(visited.size(), kExpectedItems.size());
        QVERIFY2(g_messages.isEmpty(), qPrintable(g_messages.join(u'\n')));
    }
};

QTEST_MAIN(TestSelfTest)
#include "tst_selftest.moc"

#include "app/appdelegate.h"
#include "app/tpqmlmodules.h"
#include "foundation/tplang.h"
#include "tpapptour.h"
#include "tpquicktestutil.h"

#include <QAccessible>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

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
    {"scripts",
     {"scriptsList", "row0", "addButton", "refreshButton", "historyButton", "quickOpenButton"}},
    {"folder", {"scriptsList", "row0", "backButton"}},
    {"editor-outline", {"outlineButton", "outlinePanel", "outlineRow0", "outlineRow1"}},
    {"move-picker", {"folderPickerList", "folderRow0", "folderRow1", "backButton"}},
    {"quick-open-recent", {"quickOpenField", "quickOpenList", "quickOpenRow0", "quickOpenRun0"}},
    {"quick-open", {"quickOpenField", "clearQueryButton", "quickOpenRow0", "backButton"}},
    {"search-files",
     {"searchInFilesField", "searchRegexToggle", "searchCaseToggle", "searchReplaceAll",
      "searchStatus", "searchRow0", "searchRow1", "backButton"}},
    {"add-sheet", {"sheet", "sheetAction0", "sheetAction1"}},
    {"new-folder-prompt", {"alertBox", "alertTextField", "alertAction1"}},
    {"editor",
     {"editor", "saveButton", "runButton", "backButton", "gutter", "undoButton", "redoButton",
      "findButton", "wrapButton"}},
    {"editor-find",
     {"findBar", "findField", "findNext", "findPrevious", "regexToggle", "caseToggle"}},
    {"editor-syntax-error", {"editor", "gutter", "syntaxMessage", "syntaxMessageBar"}},
    {"history-versions", {"historyList", "historyRow0", "backButton"}},
    {"history-version", {"versionLines", "versionModes", "restoreButton", "backButton"}},
    {"history-version-changes", {"versionLines", "diffLegend", "restoreButton"}},
    {"scripts-undo-delete", {"scriptsList", "undoBar", "undoBarText", "undoBarButton"}},
    {"editor-draft", {"editor", "noticeBar", "noticeText", "notice_restore", "notice_discard"}},
    {"history-files", {"historyList", "historyRow0", "backButton"}},
    {"alert", {"alertBox", "alertAction0"}},
    {"store", {"storeLabel"}},
    {"settings", {"settingsTable", "switch4", "segments_langCell", "segments_segCell"}},
    {"settings-touch-debug", {"swatch0", "swatch7", "slider"}},
    {"settings-other-language", {"settingsTable"}},
    {"scripts-again", {"scriptsList"}},
};

bool isTextEntry(const QQuickItem *item)
{
    return item->inherits("QQuickTextInput") || item->inherits("QQuickTextEdit");
}

// Every item on screen, depth first.
void forEachShownItem(QQuickItem *root, const std::function<void(QQuickItem *)> &visit)
{
    if (!root->isVisible() || root->opacity() == 0)
        return;
    visit(root);
    for (QQuickItem *child : root->childItems())
        forEachShownItem(child, visit);
}

QString describe(const QQuickItem *item)
{
    QString name = QString::fromLatin1(item->metaObject()->className()) + u' ' + item->objectName();
    if (item->parentItem())
        name += QStringLiteral(" in ") +
                QString::fromLatin1(item->parentItem()->metaObject()->className()) + u' ' +
                item->parentItem()->objectName();
    return name;
}

// The names of everything the sample scripts hold and the names written in them (such as
// their functions'), the device name the tour types, the folder it creates and the device's
// address: the data a screen may show as it is.
QStringList dataShownAsItIs()
{
    QStringList data = {QStringLiteral("Tavo"), QStringLiteral("new_tools"),
                        QStringLiteral("192.168.1.23")};
    QDirIterator it(QStringLiteral(TP_SAMPLES_DIR), QDir::AllEntries | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    static const QRegularExpression name(QStringLiteral(R"([A-Za-z_][\w.:]*\w)"));
    while (it.hasNext()) {
        const QFileInfo entry(it.next());
        data.append(entry.fileName());
        QFile file(entry.filePath());
        if (!entry.isFile() || !file.open(QIODevice::ReadOnly))
            continue;
        QRegularExpressionMatchIterator names = name.globalMatch(QString::fromUtf8(file.readAll()));
        while (names.hasNext())
            data.append(names.next().captured());
    }
    return data;
}

// A text the app shows is its own when each of its parts (its lines, and the pieces a row
// joins with " · ") is one of the two tables' texts in the current language, with anything
// in place of its %1, %2, data shown as it is, or has no letters (numbers, glyphs).
// The text an item shows: styled text (matched letters in bold) without its markup.
QString shownText(const QQuickItem *item)
{
    const QString text = item->property("text").toString();
    constexpr int styledText = 4; // Text.StyledText
    if (item->property("textFormat").toInt() != styledText)
        return text;
    static const QRegularExpression tag(QStringLiteral("<[^>]*>"));
    QString plain = text;
    plain.remove(tag);
    return plain.replace(QLatin1String("&lt;"), QLatin1String("<"))
        .replace(QLatin1String("&gt;"), QLatin1String(">"))
        .replace(QLatin1String("&quot;"), QLatin1String("\""))
        .replace(QLatin1String("&amp;"), QLatin1String("&"));
}

QStringList foreignTexts(QQuickItem *root)
{
    QStringList own;
    QList<QRegularExpression> templates;
    for (const TPLangTableMap *table : {&TPLangTable(), &TPLangExtraTable()}) {
        for (const TPLangEntry &entry : *table) {
            const QString text = entry.value(TPCurrentLang());
            own.append(text);
            if (text.contains(QLatin1String("%1"))) {
                static const QRegularExpression placeholder(QStringLiteral("%\\d"));
                QStringList pieces = text.split(placeholder);
                for (QString &piece : pieces)
                    piece = QRegularExpression::escape(piece);
                templates.append(
                    QRegularExpression(u'^' + pieces.join(QStringLiteral(".+")) + u'$'));
            }
        }
    }
    static const QStringList data = dataShownAsItIs();
    const auto isOwnPart = [&](const QString &part) {
        const QString trimmed = part.trimmed();
        if (std::none_of(trimmed.begin(), trimmed.end(), [](QChar c) { return c.isLetter(); }))
            return true;
        if (own.contains(trimmed, Qt::CaseInsensitive))
            return true;
        if (std::any_of(templates.begin(), templates.end(), [&](const QRegularExpression &form) {
                return form.match(trimmed).hasMatch();
            }))
            return true;
        return std::any_of(data.begin(), data.end(),
                           [&](const QString &datum) { return trimmed.contains(datum); });
    };
    const auto isOwn = [&](const QString &text) {
        static const QRegularExpression parts(QStringLiteral("\n| · "));
        const QStringList pieces = text.split(parts);
        return std::all_of(pieces.begin(), pieces.end(), isOwnPart);
    };
    QStringList foreign;
    forEachShownItem(root, [&](QQuickItem *item) {
        QStringList shown;
        // What a person typed, and the script in the editor, are data.
        if (!isTextEntry(item))
            shown.append(shownText(item));
        shown.append(item->property("placeholderText").toString());
        if (item->objectName() == QLatin1String("syntaxMessage"))
            return; // the Lua compiler's own message, beside the table's "syntax error"
        if (item->objectName() == QLatin1String("versionLine"))
            return; // a line of a script, as the history kept it
        for (const QString &text : std::as_const(shown)) {
            if (!isOwn(text))
                foreign.append(describe(item) + QStringLiteral(": ") + text);
        }
    });
    return foreign;
}

// A control a screen reader can reach: the item a person touches or types into is, or is
// inside, an accessible element with an interactive role and a name.
QStringList controlsWithoutName(QQuickItem *root)
{
    static const QList<QAccessible::Role> interactive = {
        QAccessible::Button,   QAccessible::CheckBox,     QAccessible::RadioButton,
        QAccessible::PageTab,  QAccessible::ListItem,     QAccessible::EditableText,
        QAccessible::Slider,   QAccessible::MenuItem,     QAccessible::Link,
        QAccessible::ComboBox, QAccessible::ButtonMenu,   QAccessible::Cell,
        QAccessible::Dialog,   QAccessible::AlertMessage, QAccessible::StaticText};
    QStringList problems;
    forEachShownItem(root, [&](QQuickItem *item) {
        // A list or a scroll area is scrolled by the screen reader's own gestures, and a
        // text without links takes no touch of its own.
        // A mouse area's own "enabled" says whether it takes touches at all.
        if (!item->isEnabled() || !item->property("enabled").toBool() ||
            item->inherits("QQuickFlickable") || item->inherits("QQuickScrollBar") ||
            item->inherits("QQuickText") ||
            (item->acceptedMouseButtons() == Qt::NoButton && !isTextEntry(item)))
            return;
        for (QQuickItem *it = item; it; it = it->parentItem()) {
            QAccessibleInterface *element = QAccessible::queryAccessibleInterface(it);
            if (!element || element->role() == QAccessible::NoRole ||
                element->role() == QAccessible::Client)
                continue;
            if (!interactive.contains(element->role()))
                problems.append(describe(item) + QStringLiteral(" is only inside a role ") +
                                QString::number(element->role()));
            else if (element->text(QAccessible::Name).trimmed().isEmpty())
                problems.append(describe(item) + QStringLiteral(" has no accessible name"));
            return;
        }
        problems.append(describe(item) + QStringLiteral(" is in no accessible element"));
    });
    return problems;
}

// Runs the whole tour in `language`, applying `check` at every stop; the problems it
// reports, each with its stop.
QStringList problemsAlongTheTour(const QString &language,
                                 const std::function<QStringList(QQuickItem *)> &check)
{
    TPAppTour tour;
    QString error;
    if (!tour.prepare(QStringLiteral(TP_SAMPLES_DIR), &error))
        return {error};
    QStringList problems;
    const bool walked = tour.run(
        language,
        [&](const QString &stop) {
            for (const QString &problem : check(tour.window()->contentItem()))
                problems.append(stop + QStringLiteral(": ") + problem);
            return true;
        },
        &error);
    if (!walked)
        problems.append(error);
    return problems;
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
        // As a screen reader would: controls make their accessible elements.
        QAccessible::setActive(true);
        g_previousHandler = qInstallMessageHandler(recordWarnings);
    }
    void init() { g_messages.clear(); }

    // The tour clears the settings it starts from: it must never reach the user's own.
    void theTourWritesOnlyToTheTestFolders()
    {
        TPAppTour tour;
        QVERIFY(QStandardPaths::isTestModeEnabled());
        QVERIFY2(QSettings().fileName().contains(QLatin1String("/.qttest/")),
                 qPrintable(QSettings().fileName()));
        QVERIFY(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                    .contains(QLatin1String("/.qttest/")));
    }

    void everyQmlFileCompiles()
    {
        QQmlEngine engine;
        QStringList files;
        QDirIterator it(QStringLiteral(":/qt-project.org/imports/TPCompanion"),
                        {QStringLiteral("*.qml")}, QDir::Files, QDirIterator::Subdirectories);
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
                    QUrl(QStringLiteral("qrc") + QFileInfo(file).path() +
                         QStringLiteral("/SingletonProbe.qml")));
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
        // The other screen-wide rules are checked on the same walk, and their findings kept
        // for the tests named after them.
        QStringList foreign;
        QStringList unnamed;
        QStringList cramped;
        const auto check = [&](const QString &stop) {
            visited.append(stop);
            QQuickItem *root = tour.window()->contentItem();
            for (const QString &problem : foreignTexts(root))
                foreign.append(stop + QStringLiteral(": ") + problem);
            for (const QString &problem : controlsWithoutName(root))
                unnamed.append(stop + QStringLiteral(": ") + problem);
            for (const QString &problem : TPTouchTargetFaults(root))
                cramped.append(stop + QStringLiteral(": ") + problem);
            for (const QString &name : kExpectedItems.value(stop)) {
                QQuickItem *item = TPFindShownItem(tour.window()->contentItem(), name);
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
        if (walked) {
            m_foreignTexts.insert(language, foreign);
            m_controlsWithoutName.insert(language, unnamed);
            m_touchTargetFaults.insert(language, cramped);
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
        QVERIFY2(walked, qPrintable(error));
        QCOMPARE(visited.size(), kExpectedItems.size());
        QVERIFY2(g_messages.isEmpty(), qPrintable(g_messages.join(u'\n')));
    }

    void everyVisibleTextComesFromTheTablesOrIsData_data() { languages(); }
    void everyVisibleTextComesFromTheTablesOrIsData()
    {
        QFETCH(QString, language);
        const QStringList problems = findings(m_foreignTexts, language, foreignTexts);
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

    void everyControlHasAnAccessibleNameAndRole_data() { languages(); }
    void everyControlHasAnAccessibleNameAndRole()
    {
        QFETCH(QString, language);
        const QStringList problems = findings(m_controlsWithoutName, language, controlsWithoutName);
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

    void everyControlAFingerUsesHasA44PxAreaOfItsOwn_data() { languages(); }
    void everyControlAFingerUsesHasA44PxAreaOfItsOwn()
    {
        QFETCH(QString, language);
        const QStringList problems = findings(m_touchTargetFaults, language, TPTouchTargetFaults);
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

private:
    // What the walks of everyScreenShowsWithoutWarnings found, by language.
    QHash<QString, QStringList> m_foreignTexts;
    QHash<QString, QStringList> m_controlsWithoutName;
    QHash<QString, QStringList> m_touchTargetFaults;

    // What the first walk in `language` found by a rule, or, when that walk did not
    // finish, what a walk of its own finds.
    static QStringList findings(const QHash<QString, QStringList> &found, const QString &language,
                                const std::function<QStringList(QQuickItem *)> &check)
    {
        return found.contains(language) ? found.value(language)
                                        : problemsAlongTheTour(language, check);
    }

    static void languages()
    {
        QTest::addColumn<QString>("language");
        QTest::newRow("vi") << "vi";
        QTest::newRow("en") << "en";
    }
};

QTEST_MAIN(TestSelfTest)
#include "tst_selftest.moc"

#include "editor/tpeditorvc.h"
#include "editor/tpscripttreeindex.h"
#include "editor/tpversionvc.h"
#include "foundation/tplang.h"
#include "scripts/tpquickopenvc.h"
#include "scripts/tpreplacepreviewvc.h"
#include "scripts/tpscriptslistvc.h"
#include "scripts/tpsearchvc.h"
#include "settings/tpsettingsstore.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTest>

namespace {

QString keyTable(const QString &key)
{
    if (TPLangTable().contains(key))
        return QStringLiteral("table");
    if (TPLangExtraTable().contains(key))
        return QStringLiteral("extra");
    return QString();
}

bool hasKeyStartingWith(const QString &prefix)
{
    for (const TPLangTableMap *table : {&TPLangTable(), &TPLangExtraTable()}) {
        for (auto it = table->keyBegin(); it != table->keyEnd(); ++it) {
            if (it->startsWith(prefix))
                return true;
        }
    }
    return false;
}

// Every file under the app's sources with one of the given suffixes, with its text.
QList<QPair<QString, QString>> sources(const QStringList &patterns)
{
    QList<QPair<QString, QString>> files;
    QDirIterator it(QStringLiteral(TP_SOURCE_DIR), patterns, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (file.open(QIODevice::ReadOnly))
            files.append({file.fileName(), QString::fromUtf8(file.readAll())});
    }
    return files;
}

} // namespace

// Every text key the code looks up is in one of the two tables: a missing key would show
// the key itself to the user.
class TestTPLKeys : public QObject
{
    Q_OBJECT

private slots:
    // The editor's controller is made to read its texts; it keeps nothing of the user's.
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void everyKeyLookedUpInCodeIsInATable()
    {
        static const QRegularExpression lookup(
            QStringLiteral("\\bTPL\\(\\s*(?:QStringLiteral\\(\\s*)?\"([^\"]*)\"(\\)?\\s*\\+)?"));
        int keys = 0;
        QStringList missing;
        const auto files = sources({QStringLiteral("*.cpp"), QStringLiteral("*.h")});
        QVERIFY(files.size() > 20);
        for (const auto &[name, text] : files) {
            for (auto it = lookup.globalMatch(text); it.hasNext();) {
                const QRegularExpressionMatch match = it.next();
                const QString key = match.captured(1);
                ++keys;
                // A literal with more added to it is the start of a family of keys.
                const bool known =
                    match.hasCaptured(2) ? hasKeyStartingWith(key) : !keyTable(key).isEmpty();
                if (!known)
                    missing.append(name + QStringLiteral(": ") + key);
            }
        }
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(u'\n')));
        QVERIFY2(keys > 40, qPrintable(QString::number(keys)));
    }

    void everyOptionTitleIsInTheTable()
    {
        for (const TPEngineOption &option : TPEngineOptions)
            QVERIFY2(!keyTable(QString::fromLatin1(option.titleKey)).isEmpty(), option.titleKey);
    }

    // Each screen's views read their controller's own texts, and exactly those: the editor's
    // page and find bar its tool texts, the list's page the list's texts, quick open's page
    // quick open's, a version's page the version screen's, the search's and its preview's
    // pages their own.
    void eachScreenExportsExactlyTheTextsItsViewsRead()
    {
        static const QRegularExpression read(QStringLiteral("\\btexts\\.([A-Za-z_]+)"));
        const QStringList listTexts = TPScriptsListVC(QString()).texts().keys();
        const QStringList editorTexts = TPEditorVC(QStringLiteral("a.lua")).toolTexts().keys();
        const QStringList quickOpenTexts = TPQuickOpenVC({}).texts().keys();
        const QStringList versionTexts = TPVersionVC({}, nullptr, {}, {}).texts().keys();
        TPScriptTreeIndex index;
        const QStringList searchTexts = TPSearchVC({}, &index).texts().keys();
        const QStringList previewTexts = TPReplacePreviewVC({}, &index).texts().keys();
        QSet<QString> searchReads;
        QSet<QString> previewReads;
        QSet<QString> listReads;
        QSet<QString> editorReads;
        QSet<QString> quickOpenReads;
        QSet<QString> versionReads;
        for (const auto &[name, text] : sources({QStringLiteral("*.qml")})) {
            QSet<QString> &reads =
                name.endsWith(QLatin1String("SearchPage.qml"))           ? searchReads
                : name.endsWith(QLatin1String("ReplacePreviewPage.qml")) ? previewReads
                : name.endsWith(QLatin1String("ScriptsListPage.qml"))    ? listReads
                : name.endsWith(QLatin1String("QuickOpenPage.qml"))      ? quickOpenReads
                : name.endsWith(QLatin1String("VersionPage.qml"))        ? versionReads
                                                                         : editorReads;
            for (auto it = read.globalMatch(text); it.hasNext();)
                reads.insert(it.next().captured(1));
        }
        QCOMPARE(QSet<QString>(listTexts.begin(), listTexts.end()), listReads);
        QCOMPARE(QSet<QString>(quickOpenTexts.begin(), quickOpenTexts.end()), quickOpenReads);
        QCOMPARE(QSet<QString>(versionTexts.begin(), versionTexts.end()), versionReads);
        QCOMPARE(QSet<QString>(searchTexts.begin(), searchTexts.end()), searchReads);
        QCOMPARE(QSet<QString>(previewTexts.begin(), previewTexts.end()), previewReads);
        QCOMPARE(QSet<QString>(editorTexts.begin(), editorTexts.end()), editorReads);
        for (const QString &key : editorTexts)
            QVERIFY2(TPLangExtraTable().contains(key), qPrintable(key));
    }
};

QTEST_MAIN(TestTPLKeys)
#include "tst_tplkeys.moc"

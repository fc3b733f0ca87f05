#include "editor/tpcodeeditor.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "platform/tptheme.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

// The code editor on a bare document: what each editing tool does to the exact text.
class TestTPCodeEditor : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTextDocument> m_document;
    std::unique_ptr<TPCodeEditor> m_editor;

    TPCodeEditor *editorWith(const QString &text, qsizetype cursor = 0)
    {
        m_editor = std::make_unique<TPCodeEditor>(QStringLiteral("main.lua"));
        m_document = std::make_unique<QTextDocument>();
        m_document->documentLayout();
        m_editor->attachDocument(m_document.get());
        m_editor->setText(text);
        m_editor->buffer()->select(cursor, cursor);
        return m_editor.get();
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionTests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_tpcodeeditor"));
        QSettings().clear();
    }
    void cleanup()
    {
        m_editor.reset();
        m_document.reset();
    }

    // Whether Find is open is the editor's: open, it marks every match in the document;
    // closed, the marks and the Replace All note go.
    void findOpenMarksEveryMatchAndClosingClearsThem()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("tap(1)\nx = tap\n"));
        const QColor mark = TPTheme::shared()->findMatch();
        const auto markedLines = [this, mark] {
            QList<int> lines;
            for (QTextBlock block = m_document->begin(); block.isValid(); block = block.next()) {
                for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
                    if (range.format.background().color() == mark)
                        lines.append(block.blockNumber());
                }
            }
            return lines;
        };
        QSignalSpy opened(editor, &TPCodeEditor::findOpenChanged);
        editor->find()->setQuery(QStringLiteral("tap"));
        QTRY_VERIFY(!editor->find()->matches().isEmpty());
        QVERIFY(markedLines().isEmpty());
        editor->setFindOpen(true);
        QCOMPARE(opened.size(), 1);
        QTRY_COMPARE(markedLines(), QList<int>({0, 1}));
        editor->setFindOpen(false);
        QCOMPARE(opened.size(), 2);
        QTRY_VERIFY(markedLines().isEmpty());
        editor->setFindOpen(true);
        editor->find()->setReplacement(QStringLiteral("touch"));
        editor->find()->replaceAll();
        QCOMPARE(editor->findNote(), TPL("find_replaced_count").arg(2));
        editor->setFindOpen(false);
        QCOMPARE(editor->findNote(), QString());
    }

    // The keyword colour is the theme's, and follows a switch to the dark appearance.
    void tokenColoursFollowTheAppearance()
    {
        editorWith(QStringLiteral("local x = 1"));
        const auto keywordColour = [this] {
            const QTextBlock block = m_document->firstBlock();
            for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
                if (range.start == 0)
                    return range.format.foreground().color();
            }
            return QColor();
        };
        TPTheme::shared()->setAppearance(TPTheme::Appearance::Light);
        QTRY_COMPARE(keywordColour(), TPTheme::lightPalette().syntax.keyword);
        TPTheme::shared()->setAppearance(TPTheme::Appearance::Dark);
        QTRY_COMPARE(keywordColour(), TPTheme::darkPalette().syntax.keyword);
        TPTheme::shared()->setAppearance(TPTheme::Appearance::FollowPlatform);
    }

    void typingIntoTheDocumentIsOneUndoStepPerRun()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("end"));
        QTextCursor cursor(editor->document());
        for (const QChar c : QStringLiteral("abc")) {
            cursor.insertText(QString(c));
        }
        QCOMPARE(editor->text(), QStringLiteral("abcend"));
        editor->undo();
        QCOMPARE(editor->text(), QStringLiteral("end"));
        QVERIFY(!editor->canUndo());
    }

    // Typing a name offers candidates; moving the cursor away closes them.
    void typingANameOffersCandidatesAndMovingAwayClosesThem()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("local counter = 1\n"), 18);
        editor->buffer()->typeCharacter(u'c');
        editor->buffer()->typeCharacter(u'o');
        QTRY_VERIFY(editor->completer()->isActive());
        QCOMPARE(editor->completer()->candidates().first().name, QStringLiteral("counter"));
        editor->buffer()->select(0, 0);
        QVERIFY(!editor->completer()->isActive());
    }

    void symbolKeysInsertAtTheCursor()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("ab"), 1);
        editor->pressSymbolKey(QStringLiteral("="));
        QCOMPARE(editor->text(), QStringLiteral("a=b"));
        QCOMPARE(editor->buffer()->selection().second, 2);
        editor->pressSymbolKey(QStringLiteral("#"));
        QCOMPARE(editor->text(), QStringLiteral("a=#b"));
    }

    void symbolRowHoldsEveryHiddenKey()
    {
        TPCodeEditor editor(QStringLiteral("a.lua"));
        const QStringList keys = editor.symbolKeys();
        for (const char *key :
             {"(", ")", "[", "]", "{", "}", "\"", "'", "=", ".",   ",",      ":",      ";",
              "#", "-", "+", "*", "/", "<", ">",  "~", "_", "Tab", "Indent", "Outdent"})
            QVERIFY2(keys.contains(QLatin1String(key)), key);
    }

    void tabKeyInsertsTheFileIndentUnit()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("if a then\n  b()\nend\n"), 10);
        editor->pressSymbolKey(QStringLiteral("Tab"));
        QCOMPARE(editor->text(), QStringLiteral("if a then\n    b()\nend\n"));
    }

    void syntaxErrorIsMarkedWithItsLineAndMessage()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("for i = 1, 3 do\n  print(i)\n"));
        QSignalSpy checked(editor, &TPCodeEditor::syntaxChecked);
        QVERIFY(checked.wait(5000));
        QCOMPARE(editor->syntaxErrorLine(), 3);
        QCOMPARE(editor->syntaxMessage(), QStringLiteral("main.lua:3: 'end' expected (to close "
                                                         "'for' at line 1) near <eof>"));
    }

    void validCodeHasNoMarkAndAFixClearsIt()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("print(1\n"));
        QTRY_COMPARE_WITH_TIMEOUT(editor->syntaxErrorLine(), 2, 5000);
        editor->buffer()->select(7, 7);
        editor->buffer()->typeCharacter(u')');
        QTRY_COMPARE_WITH_TIMEOUT(editor->syntaxErrorLine(), 0, 5000);
        QCOMPARE(editor->syntaxMessage(), QString());
    }

    // Each key restarts the 0.6 s wait: the check comes once, no sooner than 0.6 s after the
    // last key, and nothing is left waiting after it.
    void aBurstOfTypingIsCheckedOnce600MsAfterItsLastKey()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("x = 1"));
        QSignalSpy checked(editor, &TPCodeEditor::syntaxChecked);
        QVERIFY(checked.wait(5000));
        checked.clear();
        QElapsedTimer sinceLastKey;
        for (int i = 0; i < 5; ++i) {
            editor->buffer()->typeCharacter(u' ');
            sinceLastKey.start();
            QVERIFY(editor->syntaxCheckPending());
        }
        QVERIFY(checked.wait(5000));
        // A coarse timer may fire up to 5% early.
        QVERIFY2(sinceLastKey.elapsed() >= 570,
                 qPrintable(QString::number(sinceLastKey.elapsed())));
        QCOMPARE(checked.size(), 1);
        QVERIFY(!editor->syntaxCheckPending());
    }

    // Opening the outline lists the functions of the text as it is then; a function typed
    // while it is open shows the next time it opens; choosing a function goes to its line
    // and closes the outline.
    void theOutlineListsTheTextAsItIsWhenOpenedAndClosesOnAChoice()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("x = 1\nfunction a()\nend\n"));
        QSignalSpy openChanged(editor, &TPCodeEditor::outlineOpenChanged);
        QCOMPARE(editor->outline()->rowCount(), 0);
        editor->setOutlineOpen(true);
        QVERIFY(editor->outlineOpen());
        QCOMPARE(openChanged.size(), 1);
        QCOMPARE(editor->outline()->rowCount(), 1);
        editor->buffer()->select(editor->text().size(), editor->text().size());
        for (const QChar c : QStringLiteral("function b() end"))
            editor->buffer()->typeCharacter(c);
        QCOMPARE(editor->outline()->rowCount(), 1);
        editor->setOutlineOpen(false);
        editor->setOutlineOpen(true);
        QCOMPARE(editor->outline()->rowCount(), 2);
        editor->goToOutlineRow(0);
        QVERIFY(!editor->outlineOpen());
        QCOMPARE(openChanged.size(), 4);
        const qsizetype lineTwo = QStringLiteral("x = 1\n").size();
        QCOMPARE(editor->buffer()->selection(), std::make_pair(lineTwo, lineTwo));
    }

    // Once the text compiles, luacheck's warnings are listed in the current language, each
    // line with one marked; a warning takes the cursor to its line.
    void lintWarningsAreListedWithTheirLinesAndTakeTheCursorThere()
    {
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPCodeEditor *editor = editorWith(QStringLiteral("local unused = 1\n\ntpa(1, 2)\n"), 5);
        editor->setKnownGlobals({QStringLiteral("tap")});
        editor->checkSyntaxNow();
        QTRY_COMPARE_WITH_TIMEOUT(editor->lint()->count(), 2, 5000);
        TPLintReport *lint = editor->lint();
        QCOMPARE(lint->lines(), QList<int>({1, 3}));
        QCOMPARE(lint->message(), QStringLiteral("Line 1: `unused` is never used"));
        QCOMPARE(lint->countText(), QStringLiteral("⚠ 2"));
        QCOMPARE(lint->countName(), QStringLiteral("2 warnings"));
        QStringList rows;
        for (const TPTitledRowsModel::Row &row : lint->rows()->rows())
            rows.append(row.title + u'|' + row.detail);
        QCOMPARE(rows, QStringList({"`unused` is never used|Line 1",
                                    "`tpa` is not known; did you mean `tap`?|Line 3"}));
        lint->setListOpen(true);
        QVERIFY(lint->listOpen());
        editor->goToLintRow(1);
        QVERIFY(!lint->listOpen());
        const qsizetype lineThree = QStringLiteral("local unused = 1\n\n").size();
        QCOMPARE(editor->buffer()->selection(), std::make_pair(lineThree, lineThree));
        editor->goToLintMessage();
        QCOMPARE(editor->buffer()->selection(), std::make_pair(qsizetype(0), qsizetype(0)));
        // A change of language says it again.
        QSettings().remove(TPLangKey);
        TPNotificationCenter::defaultCenter()->postLangChanged();
        QCOMPARE(lint->rows()->rows().at(0).title, QStringLiteral("`unused` không được dùng"));
    }

    void aSyntaxErrorShowsItsMarkAndNoLint()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("local unused = 1\nlocal broken = (\n"));
        editor->checkSyntaxNow();
        QTRY_COMPARE_WITH_TIMEOUT(editor->syntaxErrorLine(), 3, 5000);
        QCOMPARE(editor->lint()->count(), 0);
        QCOMPARE(editor->lint()->message(), QString());
        QVERIFY(editor->lint()->lines().isEmpty());
        editor->lint()->setListOpen(true);
        QVERIFY(!editor->lint()->listOpen());
    }

    void aScriptNotCheckedSaysWhyInTheCurrentLanguage()
    {
        TPLintReport report;
        QSettings().setValue(TPLangKey, QStringLiteral("vi"));
        report.setResult({TPLintResult::Status::TooLong, {}});
        QCOMPARE(report.message(), QStringLiteral("Không kiểm tra: hơn 20.000 dòng"));
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        report.setResult({TPLintResult::Status::TooSlow, {}});
        QCOMPARE(report.message(), QStringLiteral("Not checked: took over 2 s"));
        report.setResult({TPLintResult::Status::TooLong, {}});
        QCOMPARE(report.message(), QStringLiteral("Not checked: over 20,000 lines"));
        QCOMPARE(report.count(), 0);
        QSettings().remove(TPLangKey);
    }
};

QTEST_MAIN(TestTPCodeEditor)
#include "tst_tpcodeeditor.moc"

#include "app/tpqmlmodules.h"
#include "editor/tpcodeeditor.h"
#include "editor/tpeditorvc.h"
#include "editor/tphistoryvc.h"
#include "editor/tplinegutter.h"
#include "editor/tpscripthistory.h"
#include "editor/tpversionvc.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "platform/tpnavigationstack.h"
#include "platform/tppresenter.h"
#include "platform/tptheme.h"
#include "scripts/tpscriptslistvc.h"
#include "settings/tpsettingsstore.h"
#include "tpquicktestutil.h"
#include "tpscreenfixture.h"

#include <QFontMetricsF>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickView>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

// The editor as a person uses it: its real view on the offscreen platform, the file read
// from and saved to a recording engine on loopback.
class TestEditorView : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_editorview"};
    std::unique_ptr<TPNavigationStack> m_stack;
    std::unique_ptr<QQuickView> m_view;
    TPEditorVC *m_editor = nullptr;

    // Serves `content` for reads and 200 for every save.
    void serve(const QByteArray &content, int delayMs = 0)
    {
        m_fixture.engine->setResponder([content, delayMs](const TPRecordedRequest &request) {
            TPScriptedAnswer answer =
                request.method == "GET" ? TPScriptedAnswer::ok(content) : TPScriptedAnswer::ok();
            answer.delayMs = request.method == "GET" ? delayMs : 0;
            return answer;
        });
    }

    // The editor on `path`, in a navigation stack shown in a phone-sized window (or one of
    // `width`), with its file read.
    bool open(const QString &path, bool waitForText = true, int width = 390)
    {
        m_stack = std::make_unique<TPNavigationStack>(new TPScriptsListVC(QString()),
                                                      m_fixture.presenter.get());
        m_view = std::make_unique<QQuickView>();
        m_view->setInitialProperties(
            {{QStringLiteral("stack"), QVariant::fromValue(m_stack.get())}});
        m_view->setResizeMode(QQuickView::SizeRootObjectToView);
        m_view->resize(width, 700);
        m_view->setSource(QUrl(
            QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Platform/NavigationView.qml")));
        if (!m_view->rootObject())
            return false;
        m_view->show();
        if (!QTest::qWaitForWindowExposed(m_view.get()))
            return false;
        m_editor = new TPEditorVC(path);
        m_stack->setVisible(true);
        m_stack->pushViewController(m_editor);
        // The page slides in; taps land where it comes to rest.
        QQuickItem *pages = item(QStringLiteral("pages"));
        if (!pages || !QTest::qWaitFor([pages] {
                return pages->property("depth").toInt() == 2 && !pages->property("busy").toBool();
            }))
            return false;
        return !waitForText || QTest::qWaitFor([this] { return !m_editor->loading(); });
    }

    QQuickItem *item(const QString &name) const { return TPFindItem(m_view->rootObject(), name); }

    void click(const QString &name)
    {
        QQuickItem *target = item(name);
        QVERIFY2(target && target->isVisible(), qPrintable(name));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(target));
    }

    // Puts the cursor at `position` of the text item and gives it the keyboard.
    void placeCursor(int position)
    {
        QQuickItem *editor = item(QStringLiteral("editor"));
        editor->forceActiveFocus();
        editor->setProperty("cursorPosition", position);
    }

    // Types ASCII text key by key into whatever has the keyboard.
    void typeText(const QString &text)
    {
        for (const QChar c : text)
            QTest::keyClick(m_view.get(), c.toLatin1());
    }

    // The alerts and sheets of the app, over the whole window, as the app lays them out; the
    // list under the editor gets an empty listing, so that no alert but the test's shows.
    bool showAlertsOverTheScreens(const QByteArray &content)
    {
        m_fixture.engine->setResponder([content](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(R"({"entries":[]})");
            return TPScriptedAnswer::ok(request.method == "GET" ? content : QByteArray());
        });
        if (!open(QStringLiteral("a.lua")))
            return false;
        QQmlComponent host(m_view->engine(), TPPresenter::hostUrl());
        QObject *made = host.createWithInitialProperties(
            {{QStringLiteral("presenter"), QVariant::fromValue(m_fixture.presenter.get())}});
        auto *item = qobject_cast<QQuickItem *>(made);
        if (!item)
            return false;
        item->setParent(m_view->rootObject());
        item->setParentItem(m_view->rootObject());
        return true;
    }

    int documentLength() const
    {
        return item(QStringLiteral("editor"))->property("length").toInt();
    }

    QByteArray saveAndTakeBody()
    {
        m_fixture.engine->clearRequests();
        click(QStringLiteral("saveButton"));
        if (!QTest::qWaitFor(
                [this] { return !m_fixture.requestsTo(QStringLiteral("/script")).isEmpty(); }))
            return "(no save)";
        return m_fixture.requestsTo(QStringLiteral("/script")).first().body;
    }

    // The item's bounds in the window.
    QRectF sceneRect(const QString &name) const
    {
        QQuickItem *target = item(name);
        return target ? target->mapRectToScene(target->boundingRect()) : QRectF();
    }

    // The top of the row of text at `y`, in the text item's coordinates, as the item itself
    // lays it out.
    qreal rowTopAt(qreal y) const
    {
        QQuickItem *editor = item(QStringLiteral("editor"));
        int position = 0;
        QMetaObject::invokeMethod(editor, "positionAt", Q_RETURN_ARG(int, position),
                                  Q_ARG(qreal, 20), Q_ARG(qreal, y));
        QRectF row;
        QMetaObject::invokeMethod(editor, "positionToRectangle", Q_RETURN_ARG(QRectF, row),
                                  Q_ARG(int, position));
        return row.y();
    }

private slots:
    void initTestCase() { QQuickStyle::setStyle(QStringLiteral("Basic")); }
    void init() { QVERIFY(m_fixture.setUp()); }
    void cleanup()
    {
        m_view.reset();
        m_stack.reset();
    }

    void openingAndSavingSendsBackTheBytesRead_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::newRow("crlf") << QByteArray("a = 1\r\nb = 2\r\n");
        QTest::newRow("cr") << QByteArray("a = 1\rb = 2\r");
        QTest::newRow("mixed endings") << QByteArray("a\r\nb\nc\rd\r\n\n\r");
        QTest::newRow("no-break space") << QByteArray("s = \"a\xc2\xa0"
                                                      "b\"\n");
        QTest::newRow("line separator") << QByteArray("-- a\xe2\x80\xa8"
                                                      "b\n");
        QTest::newRow("paragraph separator") << QByteArray("-- a\xe2\x80\xa9"
                                                           "b\n");
        QTest::newRow("byte-order mark") << QByteArray("\xef\xbb\xbfprint(1)\n");
        QTest::newRow("tabs") << QByteArray("if x then\n\tprint(1)\n\t\tend\n");
        QTest::newRow("no final newline") << QByteArray("print(1)");
        QByteArray big;
        while (big.size() < 1024 * 1024)
            big += "local v = \"\xc2\xa0\" -- \xe2\x80\xa8 tap(1, 2)\r\n\tsleep(5)\r";
        QTest::newRow("1 MB") << big;
    }

    void openingAndSavingSendsBackTheBytesRead()
    {
        QFETCH(QByteArray, file);
        serve(file);
        QVERIFY(open(QStringLiteral("a.lua")));
        QTRY_VERIFY(documentLength() > 0);
        QCOMPARE(saveAndTakeBody(), file);
    }

    void oneCharacterTypedAtTheEndOfACrlfFileIsAllThatChanges()
    {
        const QByteArray file = "a = 1\r\nb = 2\r\n";
        serve(file);
        QVERIFY(open(QStringLiteral("a.lua")));
        placeCursor(documentLength());
        QTest::keyClick(m_view.get(), Qt::Key_X);
        QCOMPARE(saveAndTakeBody(), file + "x");
    }

    void enterTypesTheFileLineEndingAndIndentation()
    {
        serve("for i = 1, 3 do\r\n    tap(i, i)\r\nend\r\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        placeCursor(15); // after "do"
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        typeText(QStringLiteral("print(i"));
        QCOMPARE(saveAndTakeBody(),
                 QByteArray("for i = 1, 3 do\r\n    print(i)\r\n    tap(i, i)\r\nend\r\n"));
    }

    // Opening Find gives the search field the keyboard.
    // Code is typed as it stands and in the Latin alphabet, find and replace text as it
    // stands, a line number in digits; the tool buttons and symbol keys leave the focus (and
    // the keyboard) in the text.
    void theKeyboardTypesCodeVerbatimAndTheButtonsLeaveTheFocusInTheText()
    {
        serve("print(1)\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        const int verbatim = int(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText);
        QCOMPARE(item(QStringLiteral("editor"))->inputMethodQuery(Qt::ImHints).toInt() &
                     int(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText | Qt::ImhPreferLatin),
                 verbatim | int(Qt::ImhPreferLatin));
        click(QStringLiteral("findButton"));
        QTRY_VERIFY(item(QStringLiteral("findField"))->isVisible());
        QCOMPARE(item(QStringLiteral("findField"))->inputMethodQuery(Qt::ImHints).toInt(),
                 verbatim);
        QCOMPARE(item(QStringLiteral("replaceField"))->inputMethodQuery(Qt::ImHints).toInt(),
                 verbatim);
        QCOMPARE(item(QStringLiteral("goToLineField"))->inputMethodQuery(Qt::ImHints).toInt(),
                 int(Qt::ImhDigitsOnly));
        for (const QString &button : {QStringLiteral("undoButton"), QStringLiteral("findButton"),
                                      QStringLiteral("wrapButton"), QStringLiteral("findNext")})
            QCOMPARE(item(button)->property("focusPolicy").toInt(), int(Qt::NoFocus));
        click(QStringLiteral("symbolsButton"));
        QTRY_VERIFY(item(QStringLiteral("symbolKey_=")));
        QCOMPARE(item(QStringLiteral("symbolKey_="))->property("focusPolicy").toInt(),
                 int(Qt::NoFocus));
    }

    void openingFindFocusesTheSearchField()
    {
        serve("print(1)\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        click(QStringLiteral("findButton"));
        QQuickItem *field = item(QStringLiteral("findField"));
        QVERIFY(field);
        QTRY_VERIFY(field->hasActiveFocus());
        QTest::keyClick(m_view.get(), Qt::Key_P);
        QTRY_COMPARE(m_editor->code()->find()->query(), QStringLiteral("p"));
    }

    // A keyboard's shortcuts: Ctrl+S saves, Ctrl+F finds, Ctrl+G goes to a line, Ctrl+Z and
    // Ctrl+Shift+Z undo and redo.
    void keyboardShortcutsSaveFindGoToAndUndo()
    {
        serve("print(1)\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        placeCursor(0);
        typeText(QStringLiteral("x"));
        QTRY_COMPARE(m_editor->text(), QStringLiteral("xprint(1)\n"));
        QTest::keyClick(m_view.get(), Qt::Key_Z, Qt::ControlModifier);
        QTRY_COMPARE(m_editor->text(), QStringLiteral("print(1)\n"));
        QTest::keyClick(m_view.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_COMPARE(m_editor->text(), QStringLiteral("xprint(1)\n"));

        m_fixture.engine->clearRequests();
        QTest::keyClick(m_view.get(), Qt::Key_S, Qt::ControlModifier);
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 1);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).first().body,
                 QByteArray("xprint(1)\n"));
        QTRY_VERIFY(m_fixture.alert());
        m_fixture.alert()->triggerAction(0);

        QTest::keyClick(m_view.get(), Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(item(QStringLiteral("findField"))->hasActiveFocus());
        QTest::keyClick(m_view.get(), Qt::Key_G, Qt::ControlModifier);
        QTRY_VERIFY(item(QStringLiteral("goToLineField"))->hasActiveFocus());
    }

    // Going to a line shows it in the middle of the text's area, not at its edge.
    void goingToALineCentresIt()
    {
        QByteArray script;
        for (int line = 1; line <= 200; ++line)
            script += "print(" + QByteArray::number(line) + ")\n";
        serve(script);
        QVERIFY(open(QStringLiteral("long.lua")));
        QQuickItem *flick = item(QStringLiteral("editorFlickable"));
        QQuickItem *editor = item(QStringLiteral("editor"));
        m_editor->code()->goToLine(120);
        QTRY_VERIFY(flick->property("contentY").toReal() > 0);
        const QRectF cursor = editor->property("cursorRectangle").toRectF();
        const qreal middle = flick->property("contentY").toReal() + flick->height() / 2;
        QVERIFY2(
            qAbs(cursor.center().y() - middle) <= cursor.height(),
            qPrintable(
                QStringLiteral("line at %1, middle at %2").arg(cursor.center().y()).arg(middle)));
    }

    // A word that closes a block, typed at the start of the line Enter indented, moves the
    // line back one level, as Enter moved it in; one undo moves it in again.
    void typingAClosingWordAtTheLineStartMovesItBackALevel_data()
    {
        QTest::addColumn<QByteArray>("opening");
        QTest::addColumn<QString>("closing");
        QTest::newRow("end") << QByteArray("if a then\n    b()") << "end";
        QTest::newRow("else") << QByteArray("if a then\n    b()") << "else";
        QTest::newRow("elseif") << QByteArray("if a then\n    b()") << "elseif";
        QTest::newRow("until") << QByteArray("repeat\n    b()") << "until";
        QTest::newRow("brace") << QByteArray("t = {\n    1,") << "}";
    }
    void typingAClosingWordAtTheLineStartMovesItBackALevel()
    {
        QFETCH(QByteArray, opening);
        QFETCH(QString, closing);
        serve(opening);
        QVERIFY(open(QStringLiteral("block.lua")));
        placeCursor(int(opening.size()));
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        typeText(closing);
        const QString outdented = QString::fromUtf8(opening) + u'\n' + closing;
        QTRY_COMPARE(m_editor->text(), outdented);
        QTRY_COMPARE(item(QStringLiteral("editor"))->property("text").toString(), outdented);
        // "elseif" is "else", moved back, then "if" typed after it: undo takes the "if".
        if (closing == QLatin1String("elseif"))
            return;
        m_editor->code()->undo();
        QCOMPARE(m_editor->text(), QString::fromUtf8(opening) + QStringLiteral("\n    ") + closing);
    }

    // Words that do not close a block, and closing words not at the line's start, stay.
    void otherWordsKeepTheirIndentation()
    {
        serve("if a then\n    b()");
        QVERIFY(open(QStringLiteral("block.lua")));
        placeCursor(17);
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        typeText(QStringLiteral("x = end"));
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        typeText(QStringLiteral("en"));
        QCOMPARE(saveAndTakeBody(), QByteArray("if a then\n    b()\n    x = end\n    en"));
    }

    void closingCharacterTypesOverTheAutomaticOne()
    {
        serve("");
        QVERIFY(open(QStringLiteral("a.lua")));
        placeCursor(0);
        typeText(QStringLiteral("f(\"a\")"));
        QCOMPARE(m_editor->text(), QStringLiteral("f(\"a\")"));
    }

    // A tab character shows as wide as one indent step, as the Tab key indents.
    void aTabShowsAsWideAsOneIndentStep_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("columns");
        QTest::newRow("four-space file") << QByteArray("if a then\n    b()\nend\n\tx = 1\n") << 4;
        QTest::newRow("two-space file") << QByteArray("if a then\n  b()\nend\n\tx = 1\n") << 2;
        QTest::newRow("tab-indented file") << QByteArray("if a then\n\tb()\nend\n\tx = 1\n") << 4;
    }
    void aTabShowsAsWideAsOneIndentStep()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, columns);
        serve(content);
        QVERIFY(open(QStringLiteral("tabs.lua")));
        QQuickItem *editor = item(QStringLiteral("editor"));
        QVERIFY(editor);
        QTRY_COMPARE(editor->property("text").toString(), QString::fromUtf8(content));
        const qreal space = QFontMetricsF(m_editor->font()).horizontalAdvance(QLatin1Char(' '));
        // The line "\tx = 1" starts after the three lines before it.
        const int tab = int(content.lastIndexOf('\t'));
        QRectF before;
        QRectF after;
        QMetaObject::invokeMethod(editor, "positionToRectangle", Q_RETURN_ARG(QRectF, before),
                                  Q_ARG(int, tab));
        QMetaObject::invokeMethod(editor, "positionToRectangle", Q_RETURN_ARG(QRectF, after),
                                  Q_ARG(int, tab + 1));
        QVERIFY2(qAbs((after.x() - before.x()) - columns * space) < 1.0,
                 qPrintable(QStringLiteral("%1 wide, not %2")
                                .arg(after.x() - before.x())
                                .arg(columns * space)));
    }

    void linesWrapByDefaultAndTheToggleIsRemembered()
    {
        serve("x = 1\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QQuickItem *editor = item(QStringLiteral("editor"));
        QVERIFY(editor->property("wrapMode").toInt() != 0);
        click(QStringLiteral("wrapButton"));
        QTRY_COMPARE(editor->property("wrapMode").toInt(), 0);
        QCOMPARE(QSettings().value(QLatin1String(TPEditorVC::WrapKey)).toBool(), false);
        QVERIFY(!TPEditorVC(QStringLiteral("b.lua")).wrap());
        // The app's own key is never part of the engine's settings document.
        QVERIFY(!TPSettingsStore::settingsDocument().contains(QLatin1String(TPEditorVC::WrapKey)));
        QVERIFY(!QByteArray(TPEditorVC::WrapKey).isEmpty());
        QVERIFY(QByteArray(TPEditorVC::WrapKey).startsWith("tp_"));
    }

    void gutterNumbersStayOnTheirLinesWithAndWithoutWrap()
    {
        serve("-- " + QByteArray(300, 'w') + "\nsecond = 2\nthird = 3\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        auto *gutter = qobject_cast<TPLineGutter *>(item(QStringLiteral("gutter")));
        QVERIFY(gutter);
        QTRY_COMPARE(gutter->visibleNumbers().value(1).first, 2);
        const qreal rowHeight = QFontMetricsF(m_editor->font()).height();
        const auto wrapped = gutter->visibleNumbers();
        // The long first line takes several rows, so line 2 starts well below row 2.
        QVERIFY(wrapped.at(1).second - wrapped.at(0).second > 2.5 * rowHeight);
        click(QStringLiteral("wrapButton"));
        QTRY_VERIFY(gutter->visibleNumbers().value(1).second -
                        gutter->visibleNumbers().value(0).second <
                    1.5 * rowHeight);
        QCOMPARE(gutter->visibleNumbers().value(2).first, 3);
    }

    // New lines, and lines pushed down by them, are coloured as they are typed, in the frame.
    void aKeywordTypedOnANewLineIsColouredOnScreen()
    {
        serve("x = 1");
        QVERIFY(open(QStringLiteral("a.lua")));
        QQuickItem *editor = item(QStringLiteral("editor"));
        const QColor keyword = TPTheme::shared()->syntaxColors().keyword;
        QVERIFY(keyword.isValid());
        const qreal rowHeight = QFontMetricsF(m_editor->font()).height();
        // Pixels of the keyword's colour on the text's row `row` (from 0).
        const auto keywordInkOnRow = [&](int row) {
            const QImage shot = m_view->grabWindow();
            const QPointF origin = editor->mapToScene(QPointF(
                editor->property("leftPadding").toReal(), editor->property("topPadding").toReal()));
            int ink = 0;
            for (int y = int(origin.y() + row * rowHeight);
                 y < int(origin.y() + (row + 1) * rowHeight); ++y) {
                for (int x = int(origin.x()); x < shot.width() - 10; ++x) {
                    const QColor pixel = shot.pixelColor(x, y);
                    ink += qAbs(pixel.red() - keyword.red()) < 24 &&
                                   qAbs(pixel.green() - keyword.green()) < 24 &&
                                   qAbs(pixel.blue() - keyword.blue()) < 24
                               ? 1
                               : 0;
                }
            }
            return ink;
        };
        QCOMPARE(keywordInkOnRow(0), 0);
        placeCursor(documentLength());
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        typeText(QStringLiteral("local y"));
        QTRY_VERIFY(keywordInkOnRow(1) > 0);
        // A new line above pushes the typed one down; both stay coloured.
        placeCursor(0);
        typeText(QStringLiteral("return"));
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QTRY_VERIFY(keywordInkOnRow(0) > 0);
        QTRY_VERIFY(keywordInkOnRow(2) > 0);
    }

    void turningWrapOffRedrawsTheLines()
    {
        serve("-- " + QByteArray(300, 'w') + "\nx\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QQuickItem *editor = item(QStringLiteral("editor"));
        const qreal rowHeight = QFontMetricsF(m_editor->font()).height();
        // The third row of the text: wrapped, the long first line still fills it.
        const auto inkOnThirdRow = [&] {
            const QImage shot = m_view->grabWindow();
            const QPointF origin = editor->mapToScene(
                QPointF(editor->property("leftPadding").toReal(),
                        editor->property("topPadding").toReal() + 2.5 * rowHeight));
            // Ink is whatever is far from the page's colour, in either appearance.
            const int page = qGray(TPTheme::shared()->background().rgb());
            int ink = 0;
            for (int x = int(origin.x()) + 20; x < shot.width() - 10; ++x)
                ink += qAbs(qGray(shot.pixel(x, int(origin.y()))) - page) > 100 ? 1 : 0;
            return ink;
        };
        QTRY_VERIFY(inkOnThirdRow() > 0);
        click(QStringLiteral("wrapButton"));
        QTRY_COMPARE(inkOnThirdRow(), 0);
    }

    // The number of the line that holds the cursor is drawn in the label colour, the others
    // in the gutter's grey; it follows the cursor.
    void theCursorsLineNumberIsHighlightedInTheGutter()
    {
        serve("a = 1\nb = 2\nc = 3\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        auto *gutter = qobject_cast<TPLineGutter *>(item(QStringLiteral("gutter")));
        const QColor strong = gutter->property("currentNumberColor").value<QColor>();
        const QColor grey = gutter->property("numberColor").value<QColor>();
        QVERIFY(TPTheme::contrast(strong, grey) > 2);
        // Pixels of a number's box that are nearer the label colour than the grey is.
        const auto strongInk = [&](int number) {
            const QImage shot = m_view->grabWindow();
            for (const auto &[shown, y] : gutter->visibleNumbers()) {
                if (shown != number)
                    continue;
                const QRectF box = gutter->mapRectToScene(gutter->numberRect(number, y));
                int ink = 0;
                for (int py = int(box.top()); py < int(box.bottom()); ++py) {
                    for (int px = int(box.left()); px < int(box.right()); ++px)
                        ink += TPTheme::contrast(shot.pixelColor(px, py), strong) < 1.5 ? 1 : 0;
                }
                return ink;
            }
            return -1;
        };
        placeCursor(8);
        QTRY_VERIFY(strongInk(2) > 0);
        QCOMPARE(strongInk(1), 0);
        QCOMPARE(strongInk(3), 0);
        placeCursor(13);
        QTRY_VERIFY(strongInk(3) > 0);
        QCOMPARE(strongInk(2), 0);
    }

    void aSyntaxErrorIsMarkedInTheGutterWithItsMessage()
    {
        serve("for i = 1, 3 do\n  tap(i, i)\n");
        QVERIFY(open(QStringLiteral("bad.lua")));
        auto *gutter = qobject_cast<TPLineGutter *>(item(QStringLiteral("gutter")));
        QTRY_COMPARE_WITH_TIMEOUT(gutter->property("errorLine").toInt(), 3, 5000);
        QQuickItem *message = item(QStringLiteral("syntaxMessage"));
        QVERIFY(message->isVisible());
        QCOMPARE(message->property("text").toString(),
                 QStringLiteral("bad.lua:3: 'end' expected (to close 'for' at line 1) near <eof>"));
        // Information only: Save still sends the text as it is.
        QCOMPARE(saveAndTakeBody(), QByteArray("for i = 1, 3 do\n  tap(i, i)\n"));
    }

    // From line 10 on, numbers have two digits or more; the error dot has a column of its
    // own and covers none of them.
    void theErrorDotCoversNoDigitOfALineNumber()
    {
        QByteArray script;
        for (int line = 1; line < 12; ++line)
            script += "print(" + QByteArray::number(line) + ")\n";
        script += "for i = 1, 3 do\n";
        serve(script);
        QVERIFY(open(QStringLiteral("long.lua")));
        auto *gutter = qobject_cast<TPLineGutter *>(item(QStringLiteral("gutter")));
        QTRY_COMPARE_WITH_TIMEOUT(gutter->property("errorLine").toInt(), 13, 5000);
        const auto numbers = gutter->visibleNumbers();
        QVERIFY(numbers.size() >= 13);
        for (const auto &[number, y] : numbers) {
            QVERIFY2(gutter->dotRect(y).right() < gutter->numberRect(number, y).left(),
                     qPrintable(QString::number(number)));
            QVERIFY(gutter->numberRect(number, y).left() >= 0);
        }
    }

    // A lint warning marks its line with a triangle in the warning colour, the bar under the
    // text says the first warning and how many there are, and its count lists them all.
    void lintWarningsAreMarkedInTheGutterCountedInTheBarAndListed()
    {
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        serve("print(1)\nlocal unused = 2\nprint(3)\nslep(4)\n");
        QVERIFY(open(QStringLiteral("lint.lua")));
        auto *gutter = qobject_cast<TPLineGutter *>(item(QStringLiteral("gutter")));
        QTRY_COMPARE_WITH_TIMEOUT(gutter->property("warningLines").value<QList<int>>(),
                                  QList<int>({2, 4}), 5000);
        QCOMPARE(gutter->property("errorLine").toInt(), 0);
        QQuickItem *bar = item(QStringLiteral("lintBar"));
        QTRY_VERIFY(bar->isVisible());
        QCOMPARE(item(QStringLiteral("lintMessage"))->property("text").toString(),
                 QStringLiteral("Line 2: `unused` is never used"));
        QCOMPARE(item(QStringLiteral("lintCountButton"))->property("text").toString(),
                 QStringLiteral("⚠ 2"));
        QVERIFY(!item(QStringLiteral("syntaxMessageBar"))->isVisible());

        // The triangle is drawn: the middle of its lower half is in the warning colour.
        const QColor warning = gutter->property("warningColor").value<QColor>();
        const QImage shot = m_view->grabWindow();
        const auto inkAt = [&](int line) {
            for (const auto &[number, y] : gutter->visibleNumbers()) {
                if (number == line) {
                    const QRectF box = gutter->mapRectToScene(gutter->dotRect(y));
                    return shot.pixelColor(
                        QPointF(box.center().x(), box.top() + box.height() * 0.75).toPoint());
                }
            }
            return QColor();
        };
        QCOMPARE(inkAt(2), warning);
        QCOMPARE(inkAt(4), warning);
        QVERIFY(inkAt(3) != warning);

        click(QStringLiteral("lintCountButton"));
        QTRY_VERIFY(item(QStringLiteral("lintPanel"))->isVisible());
        QQuickItem *second = nullptr;
        QTRY_VERIFY((second = TPFindShownItem(m_view->rootObject(), QStringLiteral("lintRow1"))));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(second));
        QTRY_VERIFY(!item(QStringLiteral("lintPanel"))->isVisible());
        const qsizetype lineFour = QByteArray("print(1)\nlocal unused = 2\nprint(3)\n").size();
        QCOMPARE(m_editor->code()->buffer()->selection().second, lineFour);
        QSettings().remove(TPLangKey);
    }

    // A syntax error shows its own mark and message, and no lint at all.
    void aSyntaxErrorShowsNoLint()
    {
        serve("local unused = 2\nfor i = 1, 3 do\n");
        QVERIFY(open(QStringLiteral("bad.lua")));
        auto *gutter = qobject_cast<TPLineGutter *>(item(QStringLiteral("gutter")));
        QTRY_COMPARE_WITH_TIMEOUT(gutter->property("errorLine").toInt(), 3, 5000);
        QVERIFY(gutter->property("warningLines").value<QList<int>>().isEmpty());
        QVERIFY(item(QStringLiteral("syntaxMessageBar"))->isVisible());
        QVERIFY(!item(QStringLiteral("lintBar"))->isVisible());
    }

    // Ctrl+plus, Ctrl+minus and Ctrl+0 size the text; the gutter's numbers follow, and the
    // next editor opens at the size chosen.
    void theTextSizeStepsWithTheKeysAndTheGutterFollows()
    {
        serve("print(1)\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QQuickItem *text = item(QStringLiteral("editor"));
        auto *gutter = qobject_cast<TPLineGutter *>(item(QStringLiteral("gutter")));
        const auto pointSize = [](const QObject *object) {
            return object->property("font").value<QFont>().pointSizeF();
        };
        QCOMPARE(pointSize(text), 14.0);
        placeCursor(0);
        QTest::keyClick(m_view.get(), Qt::Key_Plus, Qt::ControlModifier);
        QTest::keyClick(m_view.get(), Qt::Key_Equal, Qt::ControlModifier);
        QTRY_COMPARE(pointSize(text), 18.0);
        QCOMPARE(pointSize(gutter), 18.0);
        QTRY_VERIFY(gutter->implicitWidth() > 0);
        QTest::keyClick(m_view.get(), Qt::Key_Minus, Qt::ControlModifier);
        QTRY_COMPARE(pointSize(gutter), 16.0);
        // The text was not typed into.
        QCOMPARE(m_editor->text(), QStringLiteral("print(1)\n"));

        QVERIFY(open(QStringLiteral("b.lua")));
        QCOMPARE(pointSize(item(QStringLiteral("editor"))), 16.0);
        placeCursor(0);
        QTest::keyClick(m_view.get(), Qt::Key_0, Qt::ControlModifier);
        QTRY_COMPARE(pointSize(item(QStringLiteral("gutter"))), 14.0);
    }

    // A tap on the syntax message takes the cursor to the line it is about.
    void tappingTheSyntaxMessageGoesToItsLine()
    {
        serve("print(1)\nprint(2)\nfor i = 1, 3 do\n");
        QVERIFY(open(QStringLiteral("bad.lua")));
        QTRY_COMPARE_WITH_TIMEOUT(m_editor->code()->syntaxErrorLine(), 4, 5000);
        QCOMPARE(m_editor->code()->buffer()->selection().second, 0);
        click(QStringLiteral("syntaxMessageBar"));
        QTRY_COMPARE(m_editor->code()->buffer()->selection().second,
                     qsizetype(QByteArray("print(1)\nprint(2)\nfor i = 1, 3 do\n").size()));
    }

    void theOutlineListsTheFunctionsAndATapGoesToOne()
    {
        const QByteArray file = "local function helper()\nend\n-- function notOne()\n"
                                "function M.run(a)\nend\nM.stop = function() end\n";
        serve(file);
        QVERIFY(open(QStringLiteral("outline.lua")));
        QVERIFY(!item(QStringLiteral("outlinePanel"))->isVisible());
        click(QStringLiteral("outlineButton"));
        QTRY_VERIFY(item(QStringLiteral("outlinePanel"))->isVisible());
        QTRY_VERIFY(item(QStringLiteral("outlineRow2")));
        const QStringList names = {QStringLiteral("helper"), QStringLiteral("M.run"),
                                   QStringLiteral("M.stop")};
        const QStringList lines = {TPL("editor_outline_line").arg(1),
                                   TPL("editor_outline_line").arg(4),
                                   TPL("editor_outline_line").arg(6)};
        for (int row = 0; row < names.size(); ++row)
            QCOMPARE(
                item(QStringLiteral("outlineRow%1").arg(row))->property("title").toString() + u' ' +
                    item(QStringLiteral("outlineRow%1").arg(row))->property("detail").toString(),
                names.at(row) + u' ' + lines.at(row));
        QVERIFY(!item(QStringLiteral("outlineRow3")));
        click(QStringLiteral("outlineRow1"));
        QTRY_COMPARE(
            m_editor->code()->buffer()->selection().second,
            qsizetype(QByteArray("local function helper()\nend\n-- function notOne()\n").size()));
        QTRY_VERIFY(!item(QStringLiteral("outlinePanel"))->isVisible());
    }

    void anOutlineOfAFileWithoutFunctionsSaysSo()
    {
        serve("print(1)\n");
        QVERIFY(open(QStringLiteral("plain.lua")));
        click(QStringLiteral("outlineButton"));
        QTRY_VERIFY(item(QStringLiteral("outlineEmpty"))->isVisible());
        QCOMPARE(item(QStringLiteral("outlineEmpty"))->property("text").toString(),
                 TPL("editor_outline_empty"));
    }

    void validCodeShowsNoMarkAndNoMessage()
    {
        serve("print(1)\n");
        QVERIFY(open(QStringLiteral("good.lua")));
        QSignalSpy checked(m_editor->code(), &TPCodeEditor::syntaxChecked);
        QVERIFY(checked.wait(5000));
        QCOMPARE(item(QStringLiteral("gutter"))->property("errorLine").toInt(), 0);
        QVERIFY(!item(QStringLiteral("syntaxMessage"))->isVisible());
    }

    // Where no on-screen keyboard is, the candidates show in a list at the cursor: Up and
    // Down choose, Tab and Return take one (as one undo step), Escape closes the list.
    void completionShowsAListAtTheCursorOnADesktop()
    {
        serve("local counter = 1\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QQuickItem *list = item(QStringLiteral("completionList"));
        QVERIFY(!list->isVisible());
        placeCursor(documentLength());
        typeText(QStringLiteral("cou"));
        QTRY_VERIFY(list->isVisible());
        QQuickItem *first = TPFindShownItem(list, QStringLiteral("completionItem0"));
        QVERIFY(first);
        QCOMPARE(first->property("title").toString(), QStringLiteral("counter"));
        // Below the line typed on, where the cursor is.
        QQuickItem *text = item(QStringLiteral("editor"));
        const QRectF cursor = text->property("cursorRectangle").toRectF();
        QVERIFY(list->mapToScene(QPointF()).y() >= text->mapToScene(cursor.bottomLeft()).y());
        QTest::keyClick(m_view.get(), Qt::Key_Down);
        QTRY_COMPARE(m_editor->code()->completer()->current(), 1);
        QTest::keyClick(m_view.get(), Qt::Key_Up);
        QCOMPARE(m_editor->code()->completer()->current(), 0);
        QTest::keyClick(m_view.get(), Qt::Key_Tab);
        QTRY_VERIFY(!list->isVisible());
        QCOMPARE(m_editor->text(), QStringLiteral("local counter = 1\ncounter"));
        m_editor->code()->undo();
        QCOMPARE(m_editor->text(), QStringLiteral("local counter = 1\ncou"));

        placeCursor(documentLength());
        typeText(QStringLiteral("nt"));
        QTRY_VERIFY(list->isVisible());
        QTest::keyClick(m_view.get(), Qt::Key_Escape);
        QTRY_VERIFY(!list->isVisible());
        QCOMPARE(m_editor->text(), QStringLiteral("local counter = 1\ncount"));
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QCOMPARE(m_editor->text(), QStringLiteral("local counter = 1\ncount\n"));

        // Return takes a block, with its end.
        typeText(QStringLiteral("whi"));
        QTRY_VERIFY(list->isVisible());
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QCOMPARE(m_editor->text(),
                 QStringLiteral("local counter = 1\ncount\nwhile  do\n    \nend"));
    }

    // Above a phone's keyboard the row offers the first five candidates instead of the
    // symbol keys, which come back once there is no name to complete.
    void completionTakesTheKeyRowAboveAPhonesKeyboard()
    {
        serve("local counter = 1\nlocal countdown = 2\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        m_editor->keyboardWillChangeFrame(QRectF(0, 400, 390, 300), 700);
        QQuickItem *row = item(QStringLiteral("symbolRow"));
        QTRY_VERIFY(row->isVisible());
        placeCursor(documentLength());
        typeText(QStringLiteral("co"));
        QTRY_VERIFY(TPFindShownItem(row, QStringLiteral("symbolKey_complete:0")));
        QVERIFY(!item(QStringLiteral("completionList"))->isVisible());
        QVERIFY(!TPFindShownItem(row, QStringLiteral("symbolKey_=")));
        QVERIFY(m_editor->keyRowKeys().size() <= 5);
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {},
                          TPCentreOf(TPFindShownItem(row, QStringLiteral("symbolKey_complete:1"))));
        QCOMPARE(m_editor->text(),
                 QStringLiteral("local counter = 1\nlocal countdown = 2\ncounter"));
        QTRY_VERIFY(TPFindShownItem(row, QStringLiteral("symbolKey_=")));
        m_editor->keyboardWillHide();
    }

    void theSymbolRowShowsWithTheKeyboardAndTypesAtTheCursor()
    {
        serve("x 1\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QVERIFY(!item(QStringLiteral("symbolRow"))->isVisible());
        m_editor->keyboardWillChangeFrame(QRectF(0, 400, 390, 300), 700);
        QTRY_VERIFY(item(QStringLiteral("symbolRow"))->isVisible());
        placeCursor(2);
        click(QStringLiteral("symbolKey_="));
        QCOMPARE(m_editor->text(), QStringLiteral("x =1\n"));
        m_editor->keyboardWillHide();
        QTRY_VERIFY(!item(QStringLiteral("symbolRow"))->isVisible());
    }

    // Without an on-screen keyboard (a desktop, a hardware keyboard) the tools' button
    // shows the row; its keys type where the cursor is, and a second tap hides it.
    void theSymbolKeysButtonShowsTheRowWithoutAKeyboard()
    {
        serve("x 1\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QQuickItem *row = item(QStringLiteral("symbolRow"));
        QVERIFY(!row->isVisible());
        QCOMPARE(item(QStringLiteral("symbolsButton"))->property("checked").toBool(), false);
        placeCursor(2);
        click(QStringLiteral("symbolsButton"));
        QTRY_VERIFY(row->isVisible());
        QVERIFY(m_editor->symbolRowShown());
        QCOMPARE(item(QStringLiteral("symbolsButton"))->property("checked").toBool(), true);
        // The text keeps the keyboard and its cursor.
        QVERIFY(item(QStringLiteral("editor"))->hasActiveFocus());
        QTRY_VERIFY(TPFindShownItem(row, QStringLiteral("symbolKey_=")));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {},
                          TPCentreOf(TPFindShownItem(row, QStringLiteral("symbolKey_="))));
        QCOMPARE(m_editor->text(), QStringLiteral("x =1\n"));
        // The row's keys are a finger wide and tall each, and the text stops above the row.
        QVERIFY2(TPTouchTargetFaults(row).isEmpty(),
                 qPrintable(TPTouchTargetFaults(row).join(u'\n')));
        const QQuickItem *bar = item(QStringLiteral("syntaxMessageBar"));
        QCOMPARE(bar->mapToScene(QPointF(0, bar->height())).y(), row->mapToScene(QPointF()).y());
        click(QStringLiteral("symbolsButton"));
        QTRY_VERIFY(!row->isVisible());
    }

    // Return on the "Saved" alert answers its OK: it reaches neither the text behind nor a
    // shortcut, and the text gets the keyboard back afterwards.
    void returnOnTheSavedAlertTriggersOkAndLeavesTheTextAlone()
    {
        QVERIFY(showAlertsOverTheScreens("a\r\n"));
        placeCursor(1);
        typeText(QStringLiteral("b"));
        QTest::keyClick(m_view.get(), Qt::Key_S, Qt::ControlModifier);
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã lưu"));
        QTRY_VERIFY(item(QStringLiteral("alertBox"))->isVisible());
        m_fixture.engine->clearRequests();
        QTest::keyClick(m_view.get(), Qt::Key_S, Qt::ControlModifier);
        QTest::keyClick(m_view.get(), Qt::Key_X);
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QCOMPARE(m_fixture.alert(), nullptr);
        QCOMPARE(m_editor->text(), QStringLiteral("ab\r\n"));
        QVERIFY(!m_editor->unsavedChanges());
        QVERIFY(m_fixture.engine->flush());
        QCOMPARE(m_fixture.engine->requests().size(), 0);
        QTRY_VERIFY(item(QStringLiteral("editor"))->hasActiveFocus());
        typeText(QStringLiteral("c"));
        QCOMPARE(m_editor->text(), QStringLiteral("abc\r\n"));
    }

    void escapeOnTheSavedAlertDismissesIt()
    {
        QVERIFY(showAlertsOverTheScreens("a\n"));
        placeCursor(0);
        m_editor->onSaveTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã lưu"));
        QTest::keyClick(m_view.get(), Qt::Key_Escape);
        QCOMPARE(m_fixture.alert(), nullptr);
        QCOMPARE(m_editor->text(), QStringLiteral("a\n"));
    }

    void undoAndRedoButtonsTakeBackAndRedoTyping()
    {
        serve("a\r\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QVERIFY(!item(QStringLiteral("undoButton"))->isEnabled());
        placeCursor(1);
        typeText(QStringLiteral("bc"));
        QCOMPARE(m_editor->text(), QStringLiteral("abc\r\n"));
        click(QStringLiteral("undoButton"));
        QCOMPARE(m_editor->text(), QStringLiteral("a\r\n"));
        click(QStringLiteral("redoButton"));
        QCOMPARE(m_editor->text(), QStringLiteral("abc\r\n"));
    }

    void findBarFindsCountsAndReplaces()
    {
        serve("tap(1, 1)\r\ntap(2, 2)\r\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QVERIFY(!item(QStringLiteral("findBar"))->isVisible());
        click(QStringLiteral("findButton"));
        QTRY_VERIFY(item(QStringLiteral("findBar"))->isVisible());
        click(QStringLiteral("findField"));
        typeText(QStringLiteral("tap"));
        QTRY_COMPARE(item(QStringLiteral("matchCount"))->property("text").toString(),
                     QStringLiteral("0/2"));
        click(QStringLiteral("findNext"));
        QTRY_COMPARE(item(QStringLiteral("matchCount"))->property("text").toString(),
                     QStringLiteral("1/2"));
        click(QStringLiteral("replaceField"));
        typeText(QStringLiteral("touch"));
        click(QStringLiteral("replaceAll"));
        QCOMPARE(saveAndTakeBody(), QByteArray("touch(1, 1)\r\ntouch(2, 2)\r\n"));
    }

    void goToLineMovesTheCursor()
    {
        serve("a\nb\nc\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        click(QStringLiteral("findButton"));
        click(QStringLiteral("goToLineField"));
        typeText(QStringLiteral("3"));
        click(QStringLiteral("goToLine"));
        QTRY_COMPARE(item(QStringLiteral("editor"))->property("cursorPosition").toInt(), 4);
    }

    void aDotShowsBesideTheTitleWhileChangesAreUnsaved()
    {
        serve("a\n");
        QVERIFY(open(QStringLiteral("dir/a.lua")));
        QQuickItem *mark = item(QStringLiteral("unsavedMark"));
        QVERIFY(!mark->isVisible());
        placeCursor(0);
        QTest::keyClick(m_view.get(), Qt::Key_B);
        QTRY_VERIFY(mark->isVisible());
        QCOMPARE(item(QStringLiteral("navigationTitle"))->property("text").toString(),
                 QStringLiteral("a.lua"));
        saveAndTakeBody();
        QTRY_VERIFY(!mark->isVisible());
    }

    void anIndicatorShowsWhileTheFileIsRead()
    {
        serve("print(1)\n", 600);
        QVERIFY(open(QStringLiteral("a.lua"), false));
        QTRY_VERIFY(item(QStringLiteral("loadingIndicator"))->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(!item(QStringLiteral("loadingIndicator"))->isVisible(), 5000);
        QCOMPARE(m_editor->text(), QStringLiteral("print(1)\n"));
    }

    // The file's name, up to 17 characters, shows whole beside the back arrow at a phone's
    // width in both languages; a longer one loses its middle, never its end.
    void theTitleShowsAPhoneWidthNameWhole_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("whole");
        for (const char *lang : {"vi", "en"}) {
            QTest::addRow("17 characters, %s", lang)
                << QString::fromLatin1(lang) << QStringLiteral("collect_coins.lua") << true;
            QTest::addRow("9 characters, %s", lang)
                << QString::fromLatin1(lang) << QStringLiteral("coins.lua") << true;
            QTest::addRow("40 characters, %s", lang)
                << QString::fromLatin1(lang)
                << QStringLiteral("collect_every_coin_on_the_whole_farm.lua") << false;
        }
    }
    void theTitleShowsAPhoneWidthNameWhole()
    {
        QFETCH(QString, lang);
        QFETCH(QString, name);
        QFETCH(bool, whole);
        QSettings().setValue(TPLangKey, lang);
        serve("x = 1\n");
        QVERIFY(open(QStringLiteral("games/") + name));
        QQuickItem *title = item(QStringLiteral("navigationTitle"));
        QCOMPARE(title->property("text").toString(), name);
        QCOMPARE(title->property("truncated").toBool(), !whole);
        QCOMPARE(title->property("elide").toInt(), int(Qt::ElideMiddle));
        // Clear of the back button and of Save.
        QVERIFY(!sceneRect(QStringLiteral("navigationTitle"))
                     .intersects(sceneRect(QStringLiteral("saveButton"))));
        QVERIFY(!sceneRect(QStringLiteral("navigationTitle"))
                     .intersects(sceneRect(QStringLiteral("backButton"))));
    }

    // The unsaved dot keeps a clear gap from every bar button, and the star is not among
    // them any more: it is a tool of the editor's own bar.
    void theUnsavedDotStandsApartFromTheStarAndTheBarButtons()
    {
        serve("a\n");
        QVERIFY(open(QStringLiteral("collect_coins.lua")));
        placeCursor(0);
        QTest::keyClick(m_view.get(), Qt::Key_B);
        QTRY_VERIFY(item(QStringLiteral("unsavedMark"))->isVisible());
        const QRectF dot = sceneRect(QStringLiteral("unsavedMark"));
        const QRectF star = sceneRect(QStringLiteral("favouriteButton"));
        QVERIFY(star.top() >= sceneRect(QStringLiteral("navigationTitle")).bottom());
        QVERIFY(!dot.adjusted(-6, -6, 6, 6).intersects(star));
        QVERIFY2(sceneRect(QStringLiteral("saveButton")).left() - dot.right() >= 8,
                 qPrintable(QString::number(sceneRect(QStringLiteral("saveButton")).left() -
                                            dot.right())));
    }

    // The rest of a wrapped line starts under the line's own indent plus one step; its first
    // row starts where it always did.
    void aWrappedLinesRestHangsBelowItsIndent()
    {
        serve("    tap(1, 2) -- " + QByteArray(120, 'w').replace(10, 1, " ") + "\nx = 1\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QQuickItem *editor = item(QStringLiteral("editor"));
        const qreal space = QFontMetricsF(m_editor->font()).horizontalAdvance(u' ');
        const qreal left = editor->property("leftPadding").toReal();
        const auto rectAt = [editor](int position) {
            QRectF rect;
            QMetaObject::invokeMethod(editor, "positionToRectangle", Q_RETURN_ARG(QRectF, rect),
                                      Q_ARG(int, position));
            return rect;
        };
        QCOMPARE(rectAt(0).x(), left);
        QCOMPARE(rectAt(4).x(), left + 4 * space);
        // The first character on the second row.
        int continuation = 1;
        while (rectAt(continuation).y() <= rectAt(0).y() && continuation < 140)
            ++continuation;
        QTRY_VERIFY2(std::abs(rectAt(continuation).x() - (left + 8 * space)) < 0.5,
                     qPrintable(QString::number((rectAt(continuation).x() - left) / space)));
        // The next line starts at the margin, and the gutter numbers it 2.
        const int second = m_editor->text().indexOf(u'\n') + 1;
        QCOMPARE(rectAt(second).x(), left);
        auto *gutter = qobject_cast<TPLineGutter *>(item(QStringLiteral("gutter")));
        QTRY_COMPARE(gutter->visibleNumbers().value(1).first, 2);
        QCOMPARE(gutter->visibleNumbers().value(1).second -
                     gutter->visibleNumbers().value(0).second,
                 rectAt(second).y() - rectAt(0).y());
    }

    // A line that fitted in a wide window and wraps once it narrows hangs below its indent
    // too.
    void aLineThatWrapsOnceTheWindowNarrowsHangsToo()
    {
        serve("  tap(1, 2) -- " + QByteArray(60, 'w').replace(20, 1, " ") + "\n");
        QVERIFY(open(QStringLiteral("a.lua"), true, 1100));
        QQuickItem *editor = item(QStringLiteral("editor"));
        const auto rectAt = [editor](int position) {
            QRectF rect;
            QMetaObject::invokeMethod(editor, "positionToRectangle", Q_RETURN_ARG(QRectF, rect),
                                      Q_ARG(int, position));
            return rect;
        };
        const int last = int(m_editor->text().size()) - 2;
        QCOMPARE(rectAt(last).y(), rectAt(0).y());
        m_view->resize(390, 700);
        QTRY_VERIFY(rectAt(last).y() > rectAt(0).y());
        const qreal space = QFontMetricsF(m_editor->font()).horizontalAdvance(u' ');
        const qreal left = editor->property("leftPadding").toReal();
        int continuation = 1;
        while (rectAt(continuation).y() <= rectAt(0).y() && continuation < last)
            ++continuation;
        // The line's two spaces and one step of the file's own indent (two spaces too).
        const int hang = 2 + m_editor->code()->buffer()->indentColumns();
        QCOMPARE(hang, 4);
        QTRY_VERIFY2(std::abs(rectAt(continuation).x() - (left + hang * space)) < 0.5,
                     qPrintable(QString::number((rectAt(continuation).x() - left) / space)));
    }

    // While Find is open, every match is marked and the current one is the selection; closing
    // it takes the marks away.
    void everyMatchIsMarkedAndTheCurrentOneSelected()
    {
        serve("tap(1)\nx = 1 tap(2)\n-- no\ntap(3) tap(4)\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        QTextDocument *document = m_editor->code()->document();
        const QColor mark = TPTheme::shared()->findMatch();
        // Each marked span of the document's lines as (line, column, length).
        const auto marked = [document, mark] {
            QList<std::tuple<int, int, int>> spans;
            for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
                for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
                    if (range.format.background().color() == mark)
                        spans.append({block.blockNumber(), range.start, range.length});
                }
            }
            return spans;
        };
        QVERIFY(marked().isEmpty());
        click(QStringLiteral("findButton"));
        click(QStringLiteral("findField"));
        typeText(QStringLiteral("tap"));
        const QList<std::tuple<int, int, int>> all = {{0, 0, 3}, {1, 6, 3}, {3, 0, 3}, {3, 7, 3}};
        QTRY_COMPARE(marked(), all);
        click(QStringLiteral("findNext"));
        click(QStringLiteral("findNext"));
        QQuickItem *editor = item(QStringLiteral("editor"));
        QTRY_COMPARE(editor->property("selectionStart").toInt(), 13);
        QCOMPARE(editor->property("selectionEnd").toInt(), 16);
        QVERIFY(editor->property("selectionColor").value<QColor>() != mark);
        click(QStringLiteral("findButton"));
        QTRY_VERIFY(marked().isEmpty());
    }

    // Replace All says how many matches it replaced, until the query changes.
    void replaceAllSaysHowManyItReplaced()
    {
        serve("tap(1, 1)\ntap(2, 2)\ntap(3, 3)\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        click(QStringLiteral("findButton"));
        click(QStringLiteral("findField"));
        typeText(QStringLiteral("tap"));
        click(QStringLiteral("replaceField"));
        typeText(QStringLiteral("touch"));
        click(QStringLiteral("replaceAll"));
        QQuickItem *count = item(QStringLiteral("matchCount"));
        QTRY_COMPARE(count->property("text").toString(), QString::fromUtf8("Đã thay 3"));
        click(QStringLiteral("findField"));
        typeText(QStringLiteral("o"));
        QTRY_COMPARE(count->property("text").toString(), QStringLiteral("0/0"));
    }

    // Opening the outline or Find moves the text's top edge down; the text then starts with
    // a whole row, wherever it was scrolled to.
    void noRowIsLeftCutUnderTheOpenedPanels_data()
    {
        QTest::addColumn<QString>("panelButton");
        QTest::newRow("outline") << QStringLiteral("outlineButton");
        QTest::newRow("find") << QStringLiteral("findButton");
    }
    void noRowIsLeftCutUnderTheOpenedPanels()
    {
        QFETCH(QString, panelButton);
        QByteArray file;
        for (int line = 1; line <= 120; ++line)
            file += "function step" + QByteArray::number(line) + "() tap(1, 1) end\n";
        serve(file);
        QVERIFY(open(QStringLiteral("a.lua")));
        QQuickItem *flick = item(QStringLiteral("editorFlickable"));
        const qreal rowHeight = rowTopAt(200) - rowTopAt(180) > 0
                                    ? rowTopAt(200) - rowTopAt(180)
                                    : QFontMetricsF(m_editor->font()).lineSpacing();
        QVERIFY(rowHeight > 0);
        const qreal padding = item(QStringLiteral("editor"))->property("topPadding").toReal();
        flick->setProperty("contentY", padding + 20.5 * rowHeight);
        QVERIFY(std::abs(rowTopAt(flick->property("contentY").toReal()) -
                         flick->property("contentY").toReal()) > 1);
        const qreal topBefore = flick->mapToScene(QPointF()).y();
        click(panelButton);
        QTRY_VERIFY(flick->mapToScene(QPointF()).y() > topBefore);
        const qreal contentY = flick->property("contentY").toReal();
        QCOMPARE(rowTopAt(contentY + 1), contentY);
    }

    // Every tool keeps its place when the language changes: a tap meant for one never lands
    // on another.
    void theToolsKeepTheirPlacesInBothLanguages()
    {
        serve("x = 1\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        const QStringList tools = {
            QStringLiteral("undoButton"),      QStringLiteral("redoButton"),
            QStringLiteral("symbolsButton"),   QStringLiteral("outlineButton"),
            QStringLiteral("favouriteButton"), QStringLiteral("historyButton"),
            QStringLiteral("findButton"),      QStringLiteral("wrapButton")};
        const auto places = [this, &tools] {
            QList<QRectF> rects;
            for (const QString &tool : tools)
                rects.append(sceneRect(tool));
            return rects;
        };
        const QList<QRectF> vietnamese = places();
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPNotificationCenter::defaultCenter()->postLangChanged();
        QTRY_COMPARE(item(QStringLiteral("saveButton"))->property("text").toString(),
                     QStringLiteral("Save"));
        QCOMPARE(places(), vietnamese);
        // Apart from one another, each a finger wide.
        for (qsizetype i = 0; i < vietnamese.size(); ++i) {
            QVERIFY(vietnamese.at(i).width() >= 44);
            for (qsizetype j = i + 1; j < vietnamese.size(); ++j)
                QVERIFY2(!vietnamese.at(i).intersects(vietnamese.at(j)),
                         qPrintable(tools.at(i) + u' ' + tools.at(j)));
        }
    }

    // A version screen's Restore sits in a bar at the bottom: nowhere near the editor's Run
    // or Save, and not in the navigation bar where they are.
    void restoreSitsAwayFromRunAndSave()
    {
        serve("print(1)\n");
        QVERIFY(open(QStringLiteral("a.lua")));
        const QRectF run = sceneRect(QStringLiteral("runButton"));
        const QRectF save = sceneRect(QStringLiteral("saveButton"));
        TPScriptHistory::shared()->waitForIdle();
        m_editor->onHistoryTapped();
        auto *history = qobject_cast<TPHistoryVC *>(m_stack->topViewController());
        QVERIFY(history);
        QTRY_VERIFY(!history->loading() && history->rows()->rowCount() > 0);
        history->didSelectRow(0);
        QVERIFY(qobject_cast<TPVersionVC *>(m_stack->topViewController()));
        QQuickItem *pages = item(QStringLiteral("pages"));
        QTRY_VERIFY(pages->property("depth").toInt() == 4 && !pages->property("busy").toBool());
        QQuickItem *restore =
            TPFindShownItem(m_view->rootObject(), QStringLiteral("restoreButton"));
        QVERIFY(restore);
        const QRectF restoreRect = restore->mapRectToScene(restore->boundingRect());
        QVERIFY(!restoreRect.intersects(run));
        QVERIFY(!restoreRect.intersects(save));
        QVERIFY(restoreRect.top() >= m_view->height() - 2 * 44);
    }
};

QTEST_MAIN(TestEditorView)
#include "tst_editorview.moc"

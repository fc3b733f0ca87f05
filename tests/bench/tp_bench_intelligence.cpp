// tp-bench-intelligence: what the editor knows of Lua and of the whole tree, measured in the
// real pages on the offscreen platform against the development engine (on a thread of its
// own, so that its serving is not counted as the app's main thread). It prints:
//
//   complete lines=10000 keystroke_p95_ms=X list_ms=Y
//   lint lines=2000 lint_ms=X main_thread_max_stall_ms=Y
//   findinfiles files=1000 cold_ms=X warm_query_ms=Y main_thread_max_stall_ms=Z
//
// complete: 200 keys typed into a 10,000-line file in the editor, each of which offers
// candidates, with the tree's 1,000 scripts indexed. keystroke_p95_ms runs from the key to
// the first frame rendered after the candidates for it are set; list_ms is the median time
// to compute one list, at the same places.
// lint: luacheck on a 2,000-line script of steps (functions with their locals). lint_ms is
// the median time on the worker;
// main_thread_max_stall_ms the longest the main thread was held up while keys were typed
// into that script in the editor, each after the pause that starts the check.
// findinfiles: the search in all files over 1,000 files of about 4 KB. cold_ms runs from the
// query on a new index to the first frame showing the results of every file, reads
// included; warm_query_ms is the median, over ten queries, from a new query on the texts
// read to the frame showing its results; main_thread_max_stall_ms covers both.
//
// It fails instead of printing when results are missing or wrong.
#include "app/tpqmlmodules.h"
#include "editing/tpluacheck.h"
#include "editing/tpluacompletion.h"
#include "editing/tpluasyntaxchecker.h"
#include "editor/tpcodeeditor.h"
#include "editor/tpcompleter.h"
#include "editor/tpeditorvc.h"
#include "editor/tpscripttreeindex.h"
#include "platform/tpnavigationstack.h"
#include "platform/tppresenter.h"
#include "scripts/tpscriptslistvc.h"
#include "scripts/tpscripttree.h"
#include "scripts/tpsearchvc.h"
#include "tpdevengine.h"
#include "tpquicktestutil.h"
#include "tpstallsampler.h"
#include "tptestutil.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickView>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QThreadPool>

#include <algorithm>

namespace {

constexpr int kFiles = 1000;
constexpr int kLongLines = 10000;
constexpr int kLintLines = 2000;
constexpr int kKeys = 200;

// A script of the tree: a global helper of its own, and about 4 KB of calls to the engine's
// functions and to the helpers of other scripts.
QByteArray treeScript(int file)
{
    QByteArray script = "-- module " + QByteArray::number(file) + ": taps a row of buttons\n";
    script += "function helper" + QByteArray::number(file) + "(x, y)\n";
    script += "    tap(x, y)\n    sleep(100)\nend\n";
    for (int line = 0; script.size() < 4000; ++line) {
        const QByteArray n = QByteArray::number(line);
        switch (line % 5) {
        case 0:
            script +=
                "local x" + n + ", y" + n + " = 540, " + QByteArray::number(900 + line) + "\n";
            break;
        case 1:
            script += "tap(x" + QByteArray::number(line - 1) + ", y" +
                      QByteArray::number(line - 1) + ")\n";
            break;
        case 2:
            script += "sleep(" + QByteArray::number(50 + line % 7 * 10) + ")\n";
            break;
        case 3:
            script += "helper" + QByteArray::number((file + line) % kFiles) + "(100, 200)\n";
            break;
        default:
            script += "if findColor(0xFF0000) then swipe(100, 200, 300, 400) end\n";
        }
    }
    return script;
}

// A long script in the shapes a scripter writes.
QByteArray longScript(int lines)
{
    static const char *const shapes[] = {
        "-- step %1: tap the next button\n",        "local x%1, y%1 = 540, 960 + %1\n",
        "for i = 1, 3 do tap(x%1, y%1) end\n",      "function step%1(n) return n * 2 end\n",
        "if step%1(%1) > 10 then sleep(200) end\n", "print(string.format(\"row %d\", %1))\n",
        "local t%1 = { name = \"row\", n = %1 }\n", "t%1.n = t%1.n + helper%1(1, 2)\n",
    };
    QByteArray script;
    for (int line = 0; line < lines; ++line)
        script += QString::fromLatin1(shapes[line % 8]).arg(line).toUtf8();
    return script;
}

// A script as scripters write a long one: steps, each a function with its locals, called
// once each.
QByteArray stepsScript(int lines)
{
    QByteArray script;
    for (int step = 0; script.count('\n') < lines; ++step) {
        const QByteArray n = QByteArray::number(step);
        script += "-- step " + n +
                  ": collect the row and tap it\n"
                  "local function step" +
                  n +
                  "(row, count)\n"
                  "    local x, y = 540, 960 + row\n"
                  "    for i = 1, count do\n"
                  "        tap(x, y + i * 10)\n"
                  "        sleep(100)\n"
                  "    end\n"
                  "    if findColor(0xFF0000) then\n"
                  "        swipe(x, y, x, y - 300)\n"
                  "    end\n"
                  "    print(string.format(\"row %d done\", row))\n"
                  "    return count * 2\n"
                  "end\n"
                  "local total" +
                  n + " = step" + n + "(" + n +
                  ", 3)\n"
                  "if total" +
                  n +
                  " > 4 then toast(\"more\") end\n"
                  "\n";
    }
    QList<QByteArray> kept = script.split('\n').first(lines);
    return kept.join('\n') + '\n';
}

double median(QList<double> samples)
{
    std::sort(samples.begin(), samples.end());
    return samples.at(samples.size() / 2);
}

double percentile95(QList<double> samples)
{
    std::sort(samples.begin(), samples.end());
    return samples.at(std::min(samples.size() - 1, qsizetype(samples.size() * 0.95)));
}

// The time since `since` of the first frame rendered after `shown` (a signal of `sender`)
// came with `done` holding: the frame that shows what was measured. A frame that never
// comes ends the benchmark.
template <typename Sender, typename Signal>
double untilShown(QQuickWindow *window, const QElapsedTimer &since, const Sender *sender,
                  Signal shown, const std::function<bool()> &done, const char *what)
{
    double shownMs = -1;
    double frameMs = -1;
    const QList<QMetaObject::Connection> connections = {
        QObject::connect(sender, shown,
                         [&] {
                             if (shownMs < 0 && done()) {
                                 shownMs = since.nsecsElapsed() / 1e6;
                                 window->requestUpdate();
                             }
                         }),
        QObject::connect(window, &QQuickWindow::frameSwapped, [&] {
            if (shownMs >= 0 && frameMs < 0)
                frameMs = since.nsecsElapsed() / 1e6;
        })};
    const bool came = QTest::qWaitFor([&] { return frameMs >= 0; }, 30000);
    for (const QMetaObject::Connection &connection : connections)
        QObject::disconnect(connection);
    if (!came)
        qFatal("%s never came", what);
    return frameMs;
}

// The development engine on a thread of its own, over `root`.
class EngineThread
{
public:
    explicit EngineThread(const QString &root)
    {
        m_thread.start();
        m_context.moveToThread(&m_thread);
        QMetaObject::invokeMethod(
            &m_context,
            [this, root] {
                m_engine = new TPDevEngine(root);
                m_port = m_engine->listen(0);
            },
            Qt::BlockingQueuedConnection);
    }
    ~EngineThread()
    {
        QMetaObject::invokeMethod(
            &m_context, [this] { delete m_engine; }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }
    quint16 port() const { return m_port; }

private:
    QThread m_thread;
    QObject m_context;
    TPDevEngine *m_engine = nullptr;
    quint16 m_port = 0;
};

void pause(int ms)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

std::unique_ptr<QQuickView> showPage(TPViewController *controller, QSize size = {390, 844})
{
    auto view = std::make_unique<QQuickView>();
    view->setInitialProperties({{QStringLiteral("controller"), QVariant::fromValue(controller)}});
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    view->resize(size);
    view->setSource(controller->viewUrl());
    if (!view->rootObject())
        qFatal("%s does not load", qPrintable(controller->viewUrl().toString()));
    view->show();
    if (!QTest::qWaitForWindowExposed(view.get()))
        qFatal("the window was not shown");
    return view;
}

void measureFindInFiles(TPPresenter &presenter)
{
    TPScriptTreeIndex index;
    index.enable(&TPScriptTree::filesOf);
    auto *root = new TPScriptsListVC(QString());
    TPNavigationStack stack(root, &presenter);
    auto *search = new TPSearchVC([](const QString &) { return nullptr; }, &index);
    // The page is shown, and has drawn its first frame, before the search starts; its
    // controller is pushed with the query.
    auto view = showPage(search);
    pause(200);
    TPStallSampler stalls;
    stalls.start();
    const QString query = QStringLiteral("findColor(0xFF0000)");
    QElapsedTimer cold;
    cold.start();
    search->setQuery(query);
    stack.setVisible(true);
    stack.pushViewController(search);

    const double coldMs = untilShown(
        view.get(), cold, search, &TPSearchVC::resultsShown,
        [&] {
            return !index.readingTexts() && index.filesRead() == kFiles + 2 &&
                   search->shownMatchCount() >= kFiles;
        },
        "the cold search's results");
    const int coldMatches = search->shownMatchCount();
    if (search->rows()->rowCount() < kFiles)
        qFatal("the cold search shows %d rows", search->rows()->rowCount());

    QList<double> warm;
    for (int round = 0; round < 10; ++round) {
        const QString next = QStringLiteral("helper%1(").arg(round * 97 + 3);
        QElapsedTimer clock;
        clock.start();
        search->setQuery(next);
        warm.append(untilShown(
            view.get(), clock, search, &TPSearchVC::resultsShown,
            [&] {
                return search->shownSearch().pattern() == next && search->shownMatchCount() > 0;
            },
            "a warm query's results"));
    }
    stalls.stop();
    qInfo("findinfiles files=%d cold_ms=%.1f warm_query_ms=%.1f main_thread_max_stall_ms=%.1f",
          kFiles, coldMs, median(warm), stalls.longestMs());
    if (coldMatches < kFiles)
        qFatal("the cold search found %d matches", coldMatches);
}

void measureCompletion(TPPresenter &presenter)
{
    TPScriptTreeIndex *index = TPScriptTreeIndex::shared();
    index->enable(&TPScriptTree::filesOf);
    TPEditorVC editor(QStringLiteral("bench/long.lua"));
    editor.setPresenter(&presenter);
    auto view = showPage(&editor);
    editor.loadViewIfNeeded();
    editor.viewWillAppear();
    if (!QTest::qWaitFor([&] { return !editor.loading() && index->loaded() && !index->loading(); },
                         120000))
        qFatal("the file or the tree was not read");
    pause(1500);
    auto *textItem = view->rootObject()->findChild<QQuickItem *>(QStringLiteral("editor"));
    textItem->forceActiveFocus();
    const int middle = int(editor.text().indexOf(QStringLiteral("\n"), editor.text().size() / 2));
    textItem->setProperty("cursorPosition", middle);
    // Each word starts on a line of its own; each of its letters offers candidates (a word
    // typed whole, with nothing longer to offer, closes the list).
    const QStringList words = {QStringLiteral("helper1"), QStringLiteral("strin"),
                               QStringLiteral("slee"),    QStringLiteral("step4"),
                               QStringLiteral("findCol"), QStringLiteral("tabl")};
    TPCompleter *completer = editor.code()->completer();
    QList<double> keystrokes;
    QList<std::pair<QString, qsizetype>> places;
    for (int word = 0; keystrokes.size() < kKeys; ++word) {
        QTest::keyClick(view.get(), Qt::Key_Return);
        pause(20);
        const QString typing = words.at(word % words.size());
        for (const QChar letter : typing) {
            if (keystrokes.size() >= kKeys)
                break;
            // The candidates are on screen at the first frame rendered after they are set.
            // When nothing in the scene changed with them (the same rows as before), no new
            // frame comes: they are on screen in the frame that showed the letter.
            bool offered = false;
            double offeredMs = 0;
            double lastFrameMs = -1;
            QElapsedTimer clock;
            const QList<QMetaObject::Connection> connections = {
                QObject::connect(completer, &TPCompleter::changed,
                                 [&] {
                                     offered = completer->rows()->rowCount() > 0;
                                     offeredMs = clock.nsecsElapsed() / 1e6;
                                 }),
                QObject::connect(view.get(), &QQuickWindow::frameSwapped,
                                 [&] { lastFrameMs = clock.nsecsElapsed() / 1e6; })};
            clock.start();
            QTest::keyClick(view.get(), letter.toLatin1());
            const QString what = QStringLiteral("candidates for %1 of %2").arg(letter).arg(typing);
            if (!QTest::qWaitFor([&] { return offered; }, 30000))
                qFatal("%s never came", qPrintable(what));
            view->requestUpdate();
            QElapsedTimer grace;
            grace.start();
            while (lastFrameMs < offeredMs && grace.elapsed() < 100)
                QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
            if (lastFrameMs >= offeredMs)
                keystrokes.append(lastFrameMs);
            else if (lastFrameMs >= 0)
                keystrokes.append(offeredMs);
            else
                qFatal("no frame showed the letter for %s", qPrintable(what));
            for (const QMetaObject::Connection &connection : connections)
                QObject::disconnect(connection);
            places.append({editor.text(), editor.code()->buffer()->selection().second});
        }
        QTest::keyClick(view.get(), Qt::Key_Escape);
    }
    // One list as the editor makes it for a key: where the word starts, the file's names
    // read for that word (once per word, ahead of its first letter), and the candidates.
    const TPLuaCompletion::TreeNames tree{index->definedGlobals(), index->engineGlobals()};
    QList<double> lists;
    QList<double> firstLetters;
    std::shared_ptr<const TPLuaCompletion::FileNames> names;
    for (const auto &[text, cursor] : std::as_const(places)) {
        QElapsedTimer clock;
        clock.start();
        const TPCompletionContext context = TPLuaCompletion::contextAt(text, cursor);
        const bool newWord = !names || !TPLuaCompletion::holds(*names, text, context.start, cursor);
        if (newWord) {
            QElapsedTimer reading;
            reading.start();
            names = TPLuaCompletion::readFileNames(text, context.start, cursor);
            firstLetters.append(reading.nsecsElapsed() / 1e6);
            clock.restart();
        }
        const auto candidates =
            TPLuaCompletion::candidates(context, *names, tree, TPCompleter::Limit);
        lists.append(clock.nsecsElapsed() / 1e6);
        if (candidates.isEmpty())
            qFatal("no candidates at %lld", qlonglong(cursor));
    }
    qInfo("complete lines=%d keystroke_p95_ms=%.1f list_ms=%.2f", kLongLines,
          percentile95(keystrokes), median(lists));
    qInfo("  detail: the file's names read for a new word: median %.1f ms, on a worker after "
          "the key before it; keystroke median %.1f ms",
          median(firstLetters), median(keystrokes));
}

// luacheck's time on the worker for `script`: the median of five runs, after one that loads
// its modules.
double lintMs(const QString &script)
{
    QList<double> runs;
    for (int run = 0; run < 6; ++run) {
        double ms = 0;
        TPLintResult result;
        QThreadPool::globalInstance()->start([&] {
            thread_local TPLuaCheck luacheck;
            QElapsedTimer clock;
            clock.start();
            result =
                luacheck.check(script, {QStringLiteral("tap"), QStringLiteral("sleep")}, 60000);
            ms = clock.nsecsElapsed() / 1e6;
        });
        QThreadPool::globalInstance()->waitForDone();
        if (result.status != TPLintResult::Status::Linted || result.warnings.isEmpty())
            qFatal("luacheck did not lint the script");
        if (run > 0)
            runs.append(ms);
    }
    return median(runs);
}

void measureLint(TPPresenter &presenter)
{
    const double stepsMs = lintMs(QString::fromUtf8(stepsScript(kLintLines)));
    const double flatMs = lintMs(QString::fromUtf8(longScript(kLintLines)));

    TPEditorVC editor(QStringLiteral("bench/lint.lua"));
    editor.setPresenter(&presenter);
    auto view = showPage(&editor);
    editor.loadViewIfNeeded();
    editor.viewWillAppear();
    if (!QTest::qWaitFor([&] { return !editor.loading(); }, 20000))
        qFatal("the script was not read");
    pause(1500);
    auto *textItem = view->rootObject()->findChild<QQuickItem *>(QStringLiteral("editor"));
    textItem->forceActiveFocus();
    textItem->setProperty("cursorPosition", int(editor.text().size() / 2));
    TPStallSampler stalls;
    stalls.start();
    int linted = 0;
    const auto connection =
        QObject::connect(editor.code(), &TPCodeEditor::syntaxChecked, [&] { ++linted; });
    for (int key = 0; key < 10; ++key) {
        QTest::keyClick(view.get(), Qt::Key_Space);
        // The check starts after the pause in typing, and runs while the next keys come.
        pause(TPLuaSyntaxChecker::DelayMs + 50);
        for (int quick = 0; quick < 5; ++quick) {
            QTest::keyClick(view.get(), Qt::Key_Space);
            pause(30);
        }
    }
    pause(TPLuaSyntaxChecker::DelayMs + 800);
    stalls.stop();
    QObject::disconnect(connection);
    if (linted == 0)
        qFatal("the editor never showed a lint");
    qInfo("lint lines=%d lint_ms=%.1f main_thread_max_stall_ms=%.1f", kLintLines, stepsMs,
          stalls.longestMs());
    qInfo("  detail: a script of %d lines whose every line declares a local at the top level: "
          "lint_ms=%.1f (luacheck's analysis grows with the locals of one scope)",
          kLintLines, flatMs);
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionBench"));
    QCoreApplication::setApplicationName(QStringLiteral("tp-bench-intelligence"));
    QSettings().clear();
    QQuickStyle::setStyle(QStringLiteral("Basic"));

    QTemporaryDir root;
    for (int file = 0; file < kFiles; ++file) {
        const QString path = QStringLiteral("project%1/module%2.lua").arg(file / 100).arg(file);
        if (!TPWriteFileBytes(root.filePath(path), treeScript(file)))
            qFatal("cannot write the tree");
    }
    if (!TPWriteFileBytes(root.filePath(QStringLiteral("bench/long.lua")),
                          longScript(kLongLines)) ||
        !TPWriteFileBytes(root.filePath(QStringLiteral("bench/lint.lua")), stepsScript(kLintLines)))
        qFatal("cannot write the long scripts");
    EngineThread engine(root.path());
    if (engine.port() == 0)
        qFatal("no loopback port for the engine");
    TPPointEngineAPIAt(engine.port());
    TPPresenter presenter;

    measureCompletion(presenter);
    measureLint(presenter);
    measureFindInFiles(presenter);
    return presenter.current() ? 1 : 0;
}

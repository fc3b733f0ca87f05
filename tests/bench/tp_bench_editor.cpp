// tp-bench-editor: opens Lua files of 100 and 10,000 lines in the real editor view on the
// offscreen platform, served by a loopback engine, and types into them. Per size it prints
//   editor lines=N open_ms=X keystroke_p95_ms=Y
// where open_ms runs from the read's completion to the first rendered frame in which the
// text item holds the whole text, and keystroke_p95_ms is the 95th percentile, over 200
// keystrokes, of the time from the key event to the next rendered frame; the keys must all
// be in the text, where they were typed, or it fails. A detail line per size gives the
// longest the event loop was held up from the read's completion (the first layout and
// colouring slice included) through the colouring, the check and the typing. The editor
// keeps drafts and records every version read or saved, as in the app.
//
// Then it records 1,000 versions of a 2,000-line script, each changing a few lines, in a
// history of its own, and prints
//   history versions=1000 record_p95_ms=X list_ms=Y repo_mb=Z
// where record_p95_ms is the 95th percentile of the time one version takes to record on
// the history's worker thread, list_ms the time from asking for the file's versions to
// the answer on the main thread, and repo_mb the repository's size on disk (10^6 bytes).
#include "app/tpqmlmodules.h"
#include "editor/tpeditorvc.h"
#include "editor/tpscripthistory.h"
#include "platform/tppresenter.h"
#include "tprecordingengine.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickView>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int kKeystrokes = 200;

// About 40 bytes a line, as a script of taps, loops and helpers reads.
QByteArray luaScript(int lines)
{
    static const char *const shapes[] = {
        "-- step %1: tap the next button\n",        "local x%1, y%1 = 540, 960 + %1\n",
        "for i = 1, 3 do tap(x%1, y%1) end\n",      "function step%1(n) return n * 2 end\n",
        "if step%1(%1) > 10 then sleep(200) end\n", "print(\"done with row \" .. %1)\n",
        "local t%1 = { name = \"row\", n = %1 }\n", "--[[ note %1 ]] sleep(%1 % 50)\n",
    };
    QByteArray script;
    for (int line = 0; line < lines; ++line)
        script += QString::fromLatin1(shapes[line % 8]).arg(line).toUtf8();
    return script;
}

// Waits for the window's next rendered frame; the time since `since`, in milliseconds. A
// frame that never comes ends the benchmark: a figure without it would not be one.
double untilNextFrame(QQuickWindow *window, const QElapsedTimer &since)
{
    bool swapped = false;
    const auto connection =
        QObject::connect(window, &QQuickWindow::frameSwapped, window, [&] { swapped = true; });
    window->requestUpdate();
    QElapsedTimer limit;
    limit.start();
    while (!swapped && limit.elapsed() < 5000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    QObject::disconnect(connection);
    if (!swapped)
        qFatal("no frame was rendered in 5 s");
    return since.nsecsElapsed() / 1e6;
}

double percentile95(std::vector<double> samples)
{
    std::sort(samples.begin(), samples.end());
    return samples.at(std::min(samples.size() - 1, size_t(samples.size() * 0.95)));
}

struct Figures
{
    double openMs = 0;
    double keystrokeP95Ms = 0;
    double longestStallMs = 0;
};

Figures measure(int lines, TPRecordingEngine &engine, TPPresenter &presenter)
{
    const QByteArray script = luaScript(lines);
    engine.setResponder(
        [&script](const TPRecordedRequest &) { return TPScriptedAnswer::ok(script); });

    TPEditorVC editor(QStringLiteral("bench/main.lua"));
    editor.setPresenter(&presenter);
    QQuickView view;
    view.setInitialProperties({{QStringLiteral("controller"), QVariant::fromValue(&editor)}});
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(390, 800);
    view.setSource(
        QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Editor/EditorPage.qml")));
    view.show();
    if (!QTest::qWaitForWindowExposed(&view))
        qFatal("the editor's window was not shown");
    auto *textItem = view.rootObject()->findChild<QQuickItem *>(QStringLiteral("editor"));

    // How long the event loop is held up, sampled by a timer that should fire every 1 ms.
    double longestStall = 0;
    QElapsedTimer stallClock;
    QTimer sampler;
    sampler.setInterval(1);
    QObject::connect(&sampler, &QTimer::timeout, [&] {
        longestStall = std::max(longestStall, stallClock.nsecsElapsed() / 1e6);
        stallClock.restart();
    });

    // The read completes when the screen stops showing that it is loading, right before the
    // text is handed to the code editor; from then on the stall sampler watches the first
    // layout, the colouring, the first syntax check and the typing.
    QElapsedTimer sinceRead;
    QObject::connect(&editor, &TPEditorVC::loadingChanged, &view, [&] {
        if (editor.loading())
            return;
        sinceRead.start();
        stallClock.start();
        sampler.start();
    });
    // The open ends with the first frame rendered while the text item holds the whole text.
    Figures figures;
    const int expectedLength = QString::fromUtf8(script).size();
    QObject::connect(&view, &QQuickWindow::frameSwapped, &view, [&] {
        if (sinceRead.isValid() && figures.openMs == 0 &&
            textItem->property("length").toInt() == expectedLength)
            figures.openMs = sinceRead.nsecsElapsed() / 1e6;
    });
    editor.loadViewIfNeeded();
    editor.viewWillAppear();
    if (!QTest::qWaitFor([&figures] { return figures.openMs > 0; }, 10000))
        qFatal("no frame showed the file's text");
    if (editor.text().toUtf8() != script)
        qFatal("the editor does not hold the file as read");

    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 1500)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);

    textItem->forceActiveFocus();
    const int cursor = expectedLength / 2;
    textItem->setProperty("cursorPosition", cursor);
    untilNextFrame(&view, settle);
    std::vector<double> keystrokes;
    QString typed;
    for (int i = 0; i < kKeystrokes; ++i) {
        QElapsedTimer sinceKey;
        sinceKey.start();
        const bool space = i % 10 == 9;
        QTest::keyClick(&view, space ? Qt::Key_Space : Qt::Key_A);
        typed += space ? u' ' : u'a';
        keystrokes.push_back(untilNextFrame(&view, sinceKey));
    }
    sampler.stop();
    if (editor.text() != QString::fromUtf8(script).insert(cursor, typed))
        qFatal("the %d keys did not all reach the text where they were typed", kKeystrokes);
    figures.keystrokeP95Ms = percentile95(keystrokes);
    figures.longestStallMs = longestStall;
    return figures;
}

} // namespace

// Records 1,000 versions of a 2,000-line script in a fresh history and prints its figures;
// fails when the history does not hold every version, the newest byte for byte.
void measureHistory()
{
    constexpr int kVersions = 1000;
    const QTemporaryDir folder;
    TPScriptHistory history(folder.filePath(QStringLiteral("history")));
    QList<QByteArray> lines = luaScript(2000).split('\n');
    QList<double> recordMs;
    QByteArray newest;
    for (int version = 0; version < kVersions; ++version) {
        // A few lines change from one version to the next, as in an edit and a save.
        for (int change = 0; change < 3; ++change) {
            const qsizetype line = (version * 7 + change * 331) % (lines.size() - 1);
            lines[line] = "-- version " + QByteArray::number(version) + " changed this line";
        }
        newest = lines.join('\n');
        QElapsedTimer clock;
        clock.start();
        history.record(QStringLiteral("lib/long.lua"), newest);
        history.waitForIdle();
        recordMs.append(clock.nsecsElapsed() / 1e6);
    }
    std::sort(recordMs.begin(), recordMs.end());

    QElapsedTimer clock;
    clock.start();
    std::optional<QList<TPScriptVersion>> versions;
    QObject context;
    history.versions(QStringLiteral("lib/long.lua"), &context,
                     [&versions](const QList<TPScriptVersion> &found) { versions = found; });
    if (!QTest::qWaitFor([&versions] { return versions.has_value(); }, 60000))
        qFatal("the history never listed the versions");
    const double listMs = clock.nsecsElapsed() / 1e6;
    if (versions->size() != kVersions || versions->first().size != newest.size())
        qFatal("the history holds %lld versions, not %d", qlonglong(versions->size()), kVersions);
    std::optional<QByteArray> stored;
    history.contents(versions->first().blob, &context,
                     [&stored](const std::optional<QByteArray> &bytes) { stored = bytes; });
    if (!QTest::qWaitFor([&stored] { return stored.has_value(); }, 60000) || *stored != newest)
        qFatal("the newest version is not the bytes recorded");
    qInfo("history versions=%d record_p95_ms=%.1f list_ms=%.1f repo_mb=%.1f", kVersions,
          recordMs.at(recordMs.size() * 95 / 100), listMs, history.sizeOnDisk() / 1e6);
}

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QGuiApplication::setOrganizationName(QStringLiteral("TPCompanionBench"));
    QGuiApplication::setApplicationName(QStringLiteral("tp-bench-editor"));
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QSettings().clear();

    TPRecordingEngine engine;
    if (!engine.startAsTheEngine())
        qFatal("no loopback port for the engine");
    TPPresenter presenter;
    for (const int lines : {100, 10000}) {
        const Figures figures = measure(lines, engine, presenter);
        qInfo("editor lines=%d open_ms=%.1f keystroke_p95_ms=%.1f", lines, figures.openMs,
              figures.keystrokeP95Ms);
        qInfo("  detail lines=%d longest_event_loop_stall_while_colouring_and_typing_ms=%.1f",
              lines, figures.longestStallMs);
    }
    measureHistory();
    return 0;
}

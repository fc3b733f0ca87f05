// tp-bench-quickopen: quick open over a listing of 100,000 files, in its real page in a
// phone-sized window on the offscreen platform. A query is typed into the page's field one
// key at a time, each key after the previous one's results are on screen, and it prints:
//
//   quickopen entries=100000 keystroke_p95_ms=X main_thread_max_stall_ms=Y
//
// keystroke_p95_ms runs from the key to the first rendered frame after the results for the
// query typed so far are set (95th percentile of the keys of five typed queries), and
// main_thread_max_stall_ms is the longest the main thread was held up while typing. It fails
// instead of printing when a query's results do not come or do not put the expected file
// first.
#include "app/tpqmlmodules.h"
#include "engine/tpengineapi.h"
#include "platform/tppresenter.h"
#include "scripts/tpquickopenvc.h"
#include "tpquicktestutil.h"
#include "tprecordingengine.h"
#include "tpstallsampler.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickView>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kEntries = 100000;

// 100 projects of 10 modules of 100 files each.
QString pathOf(int file)
{
    return QStringLiteral("project%1/module%2/script_%3.lua")
        .arg(file / 1000, 2, 10, QLatin1Char('0'))
        .arg(file / 100 % 10)
        .arg(file, 5, 10, QLatin1Char('0'));
}

QByteArray listing()
{
    QByteArray body = "{\"entries\":[";
    for (int file = 0; file < kEntries; ++file) {
        if (file > 0)
            body += ',';
        body += "{\"path\":\"" + pathOf(file).toUtf8() + "\"}";
    }
    return body + "]}";
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionBench"));
    QCoreApplication::setApplicationName(QStringLiteral("tp-bench-quickopen"));
    QSettings().clear();
    QQuickStyle::setStyle(QStringLiteral("Basic"));

    TPRecordingEngine engine;
    if (!engine.startAsTheEngine()) {
        qWarning("no loopback port for the engine");
        return 1;
    }
    const QByteArray body = listing();
    engine.setResponder([&body](const TPRecordedRequest &) { return TPScriptedAnswer::ok(body); });

    TPPresenter presenter;
    TPQuickOpenVC open([](const QString &) { return nullptr; });
    open.setPresenter(&presenter);
    QQuickView view;
    view.setInitialProperties({{QStringLiteral("controller"), QVariant::fromValue(&open)}});
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(390, 844);
    view.setSource(
        QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Scripts/QuickOpenPage.qml")));
    QQuickItem *field = view.rootObject()
                            ? TPFindItem(view.rootObject(), QStringLiteral("quickOpenField"))
                            : nullptr;
    if (!field) {
        qWarning("quick open's page does not load");
        return 1;
    }
    view.show();
    if (!QTest::qWaitForWindowExposed(&view))
        return 1;
    open.loadViewIfNeeded();
    open.viewWillAppear();
    if (!QTest::qWaitFor([&open] { return !open.loading() && open.rows(); }, 60000) ||
        presenter.current()) {
        qWarning("the listing was not read");
        return 1;
    }

    // Each query with the file it must put first once typed whole.
    const QList<std::pair<QString, QString>> queries = {
        {QStringLiteral("script_54321"), pathOf(54321)},
        {QStringLiteral("p42m7s"), QStringLiteral("project42/module7/script_42700.lua")},
        {QStringLiteral("module3/script_0030"), pathOf(300)},
        {QStringLiteral("99999"), pathOf(99999)},
        {QStringLiteral("prj7mod2"), QStringLiteral("project07/module0/script_07002.lua")},
    };
    QList<double> keystrokes;
    TPStallSampler stalls;
    stalls.start();
    for (const auto &[query, first] : queries) {
        field->forceActiveFocus();
        open.setQuery(QString());
        if (!QTest::qWaitFor([&open] { return open.shownQuery().isEmpty(); }))
            return 1;
        for (qsizetype typed = 1; typed <= query.size(); ++typed) {
            const QString prefix = query.left(typed);
            QElapsedTimer key;
            bool shown = false;
            double keyMs = 0;
            QEventLoop waiting;
            const auto connection =
                QObject::connect(&view, &QQuickWindow::frameSwapped, &waiting, [&] {
                    if (open.shownQuery() == prefix && !shown) {
                        shown = true;
                        keyMs = key.nsecsElapsed() / 1e6;
                        waiting.quit();
                    }
                });
            QTimer::singleShot(10000, &waiting, &QEventLoop::quit);
            key.start();
            QTest::keyClick(&view, query.at(typed - 1).toLatin1());
            if (!shown)
                waiting.exec();
            QObject::disconnect(connection);
            if (!shown || open.query() != prefix) {
                qWarning("no results shown for \"%s\"", qPrintable(prefix));
                return 1;
            }
            keystrokes.append(keyMs);
        }
        if (open.rows()->rows().isEmpty() || open.rows()->rows().first().path != first) {
            qWarning("\"%s\" does not put %s first", qPrintable(query), qPrintable(first));
            return 1;
        }
    }
    stalls.stop();

    std::sort(keystrokes.begin(), keystrokes.end());
    const double p95 = keystrokes.at(std::min<qsizetype>(
        keystrokes.size() - 1, qsizetype(std::ceil(0.95 * keystrokes.size())) - 1));
    qInfo("quickopen entries=%d keystroke_p95_ms=%.1f main_thread_max_stall_ms=%.1f", kEntries, p95,
          stalls.longestMs());
    return 0;
}

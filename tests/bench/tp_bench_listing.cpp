// tp-bench-listing: serves listings of 1,000, 100,000 and 1,000,000 entries and one of
// 100 MB over loopback to the app's real engine client and scripts list screen, shaped as a
// phone's script folder holds them ("proj", then "proj/dNNN" folders of "sNNNNNN.lua"
// files). For each size it prints
//   listing entries=N body_mb=B fetch_to_rows_ms=X main_thread_max_stall_ms=Y peak_rss_mb=Z
// where fetch_to_rows_ms runs from the reload's start to the rows being shown,
// main_thread_max_stall_ms is the longest the main thread was held up meanwhile (a timer
// due every millisecond), and peak_rss_mb the client's peak resident memory. The engine runs
// in this process; each client runs in a child process of its own, so that its memory and
// its main thread are its own. MB are 10^6 bytes.
#include "tpengineapi.h"
#include "tppresenter.h"
#include "tprecordingengine.h"
#include "tpscriptslistvc.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>

#include <sys/resource.h>

namespace {

QByteArray listing(qint64 entries)
{
    QByteArray body = "{\"entries\":[{\"path\":\"proj\",\"dir\":true}";
    body.reserve(entries * 48 + 64);
    for (qint64 i = 0; i < entries; ++i) {
        if (i % 1000 == 0)
            body += ",{\"path\":\"proj/d" + QByteArray::number(i / 1000) + "\",\"dir\":true}";
        body += ",{\"path\":\"proj/d" + QByteArray::number(i / 1000) + "/s" +
                QByteArray::number(i) + ".lua\",\"dir\":false}";
    }
    body += "]}";
    return body;
}

// The child: reloads the root list once from the engine on `port` and prints its figures.
int measureClient(quint16 port)
{
    TPEngineAPI::setBaseAddressForTesting(QStringLiteral("http://127.0.0.1:%1").arg(port));
    TPPresenter presenter;
    TPScriptsListVC list{QString()};
    list.setPresenter(&presenter);

    double longestStall = 0;
    QElapsedTimer sinceTick;
    QTimer ticker;
    ticker.setInterval(1);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        longestStall = std::max(longestStall, sinceTick.nsecsElapsed() / 1e6);
        sinceTick.restart();
    });

    QElapsedTimer fetch;
    fetch.start();
    sinceTick.start();
    ticker.start();
    list.reloadData();
    while (list.rows().isEmpty() && !presenter.current() && fetch.elapsed() < 120000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    const double fetchMs = fetch.nsecsElapsed() / 1e6;
    ticker.stop();
    if (list.rows().isEmpty()) {
        qWarning("the list shows no rows");
        return 1;
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    qInfo("%.1f %.1f %.1f", fetchMs, longestStall, usage.ru_maxrss / 1024.0);
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == QLatin1String("--client"))
        return measureClient(quint16(arguments.at(2).toUInt()));

    // Entry counts; the last one makes a listing of about 100 MB (46 bytes an entry).
    const QList<qint64> sizes = {1000, 100000, 1000000, 2180000};
    for (const qint64 entries : sizes) {
        const QByteArray body = listing(entries);
        TPRecordingEngine engine;
        if (!engine.startAsTheEngine())
            qFatal("no loopback port for the engine");
        engine.setResponder(
            [&body](const TPRecordedRequest &) { return TPScriptedAnswer::ok(body); });
        QProcess client;
        client.setProcessChannelMode(QProcess::SeparateChannels);
        client.start(QCoreApplication::applicationFilePath(),
                     {QStringLiteral("--client"), QString::number(engine.port())});
        // The engine answers from this process's event loop while the client runs.
        while (client.state() != QProcess::NotRunning)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        const QStringList figures =
            QString::fromLocal8Bit(client.readAllStandardError()).trimmed().split(u' ');
        if (client.exitCode() != 0 || figures.size() != 3)
            qFatal("the client failed: %s", qPrintable(figures.join(u' ')));
        qInfo("listing entries=%lld body_mb=%.1f fetch_to_rows_ms=%s main_thread_max_stall_ms=%s "
              "peak_rss_mb=%s",
              entries, body.size() / 1e6, qPrintable(figures.at(0)), qPrintable(figures.at(1)),
              qPrintable(figures.at(2)));
    }
    return 0;
}

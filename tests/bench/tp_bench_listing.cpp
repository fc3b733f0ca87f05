// tp-bench-listing: serves listings of 1,000, 100,000 and 1,000,000 entries and one of
// 100 MB over loopback to the app's real engine client and scripts list screen, shaped as a
// phone's script folder holds them ("proj", then "proj/dNNN" folders of "sNNNNNN.lua"
// files). For each size it prints
//   listing entries=N body_mb=B fetch_to_rows_ms=X main_thread_max_stall_ms=Y peak_rss_mb=Z
// where fetch_to_rows_ms runs from the reload's start to the rows being set, the completion
// that sets them included, main_thread_max_stall_ms is the longest the main thread was held
// up meanwhile (a timer due every millisecond), and peak_rss_mb the client's peak resident
// memory. The shown folder is the root, whose only child is "proj": each run checks that the
// list holds exactly that row. The engine runs
// in this process; each client runs in a child process of its own, so that its memory and
// its main thread are its own, and each reload is the first of its process. Every size is
// measured in five such processes: the time is their median, the stall the worst and the
// memory the largest. MB are 10^6 bytes.
//
// Then it serves a listing of 100,000 entries, 10,000 of them children of the root, to the
// real list screen with its QML on the offscreen platform, and prints
//   listing_folder entries=100000 rows=10000 fetch_to_frame_ms=X main_thread_max_stall_ms=Y
// where fetch_to_frame_ms runs from the reload to the rendered frame that shows the first
// rows (median of five processes) and the stall is the worst over the same time, the
// completion that sets the rows and the frame's rendering included. Each run checks the
// rows: 10,000, folders first, the first and the last as the listing names them.
//
// Then it sends 500 requests at once from a fresh client process to an engine that answers
// each with a small script, and prints
//   requests concurrent=500 all_done_ms=X peak_threads=T peak_rss_growth_mb=M
//     detail idle_threads=I
// where all_done_ms runs from the first call to the last completion, peak_threads is the
// most threads the client had at once and peak_rss_growth_mb its resident memory at the
// peak over the same before the first call (the idle count of threads is given in the
// detail line). Five processes again: the median time, the most threads, the most growth.
#include "app/tpqmlmodules.h"
#include "engine/tpengineapi.h"
#include "platform/tppresenter.h"
#include "scripts/tpscriptslistvc.h"
#include "tploopbacklistener.h"
#include "tprawserver.h"
#include "tpstallsampler.h"

#include "scripts/tpscriptrowsmodel.h"
#include "tpquicktestutil.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QJsonObject>
#include <QProcess>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace {

// Fresh client processes per size: the time printed is their median, the stall the worst
// of them and the memory the largest.
constexpr int kRuns = 5;

// The shown folder's size for the rendered line: 10 folders of 9,000 files each, then
// 9,990 files, all children of the root.
constexpr int kFolderRows = 10000;
constexpr int kFolderEntries = 100000;

QByteArray folderListing()
{
    QByteArray body = "{\"entries\":[";
    body.reserve(kFolderEntries * 32);
    bool first = true;
    const auto add = [&](const QByteArray &path, bool dir) {
        body += (first ? "" : ",") + QByteArray("{\"path\":\"") + path +
                "\",\"dir\":" + (dir ? "true}" : "false}");
        first = false;
    };
    for (int folder = 0; folder < 10; ++folder) {
        add("d" + QByteArray::number(folder), true);
        for (int file = 0; file < 8999; ++file)
            add("d" + QByteArray::number(folder) + "/s" + QByteArray::number(file) + ".lua", false);
    }
    for (int file = 0; file < kFolderRows - 10; ++file)
        add("f" + QByteArray::number(file).rightJustified(5, '0') + ".lua", false);
    body += "]}";
    return body;
}

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

// One figure of /proc/self/status, such as "VmHWM" or "Threads", as its number.
double processStatus(const QByteArray &name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        qFatal("no /proc/self/status");
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).trimmed().split(' ').first().toDouble();
    }
    qFatal("no %s in /proc/self/status", name.constData());
}

// The process's peak resident memory in MB, as the kernel counts it since the program
// started. getrusage's figure is not used: it keeps the parent's size from before exec.
double peakResidentMb()
{
    return processStatus("VmHWM") * 1024 / 1e6;
}

constexpr int kConcurrentRequests = 500;

// What the engine answers to a read of `target`: a small script naming it.
QByteArray scriptFor(const QByteArray &target)
{
    return "-- " + target + "\n" + QByteArray(1000, 'x') + "\n";
}

// The child: sends kConcurrentRequests reads at once to the engine on `port` and prints
// "all_done_ms peak_threads peak_rss_growth_mb idle_threads". Threads and memory are
// sampled every millisecond on the main thread, and once more at the end.
int measureRequests(quint16 port)
{
    TPEngineAPI::setBaseAddressForTesting(QStringLiteral("http://127.0.0.1:%1").arg(port));
    const int idleThreads = int(processStatus("Threads"));
    const double idleRssKb = processStatus("VmRSS");
    int peakThreads = idleThreads;
    double peakRssKb = idleRssKb;
    const auto sample = [&] {
        peakThreads = std::max(peakThreads, int(processStatus("Threads")));
        peakRssKb = std::max(peakRssKb, processStatus("VmRSS"));
    };
    QTimer sampler;
    sampler.setInterval(1);
    QObject::connect(&sampler, &QTimer::timeout, sample);

    int done = 0;
    int right = 0;
    QEventLoop waiting;
    QElapsedTimer clock;
    clock.start();
    sampler.start();
    for (int i = 0; i < kConcurrentRequests; ++i) {
        const QString query = QStringLiteral("name=s%1.lua").arg(i);
        TPEngineAPI::requestMethod(QStringLiteral("GET"), QStringLiteral("/script"), query,
                                   std::nullopt,
                                   [&, expected = scriptFor("/script?" + query.toLatin1())](
                                       const std::optional<QByteArray> &body, int status,
                                       const TPEngineAPI::Error &error) {
                                       right += !error && status == 200 && body == expected;
                                       if (++done == kConcurrentRequests)
                                           waiting.quit();
                                   });
    }
    QTimer::singleShot(60000, &waiting, &QEventLoop::quit);
    waiting.exec();
    const double allDoneMs = clock.nsecsElapsed() / 1e6;
    sampler.stop();
    sample();
    if (right != kConcurrentRequests) {
        qWarning("%d of %d requests were answered as the engine answered them", right,
                 kConcurrentRequests);
        return 1;
    }
    qInfo("%.1f %d %.1f %d", allDoneMs, peakThreads, (peakRssKb - idleRssKb) * 1024 / 1e6,
          idleThreads);
    return 0;
}

// The child: reloads the root list once from the engine on `port` and prints its figures.
int measureClient(quint16 port)
{
    TPEngineAPI::setBaseAddressForTesting(QStringLiteral("http://127.0.0.1:%1").arg(port));
    TPPresenter presenter;
    TPScriptsListVC list{QString()};
    list.setPresenter(&presenter);

    TPStallSampler stalls;

    QElapsedTimer fetch;
    fetch.start();
    stalls.start();
    // The main thread waits in its event loop, as in the app, and leaves the cores to the
    // client's other threads and the engine until the rows are set, after the reload is
    // reported done: the time and the stall end once they are.
    QEventLoop waiting;
    double fetchMs = 0;
    QObject::connect(list.rows(), &QAbstractItemModel::modelReset, &waiting, [&] {
        fetchMs = fetch.nsecsElapsed() / 1e6;
        waiting.quit();
    });
    QTimer::singleShot(120000, &waiting, &QEventLoop::quit);
    list.reloadData();
    waiting.exec();
    stalls.stop();
    const QJsonObject row = list.rows()->entryAt(0).toObject();
    if (fetchMs == 0 || list.rows()->rowCount() != 1 ||
        row.value(QLatin1String("path")).toString() != QLatin1String("proj") ||
        !row.value(QLatin1String("dir")).toBool()) {
        qWarning("the list does not show the one folder \"proj\"");
        return 1;
    }
    qInfo("%.1f %.1f %.1f", fetchMs, stalls.longestMs(), peakResidentMb());
    return 0;
}

// The child of the rendered line: the list screen with its QML in a phone-sized window on
// the offscreen platform reloads the root once; prints the time to the frame that shows the
// first rows and the longest stall until then.
int measureFolderClient(int argc, char *argv[], quint16 port)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    TPEngineAPI::setBaseAddressForTesting(QStringLiteral("http://127.0.0.1:%1").arg(port));
    TPPresenter presenter;
    TPScriptsListVC list{QString()};
    list.setPresenter(&presenter);
    QQuickView view;
    view.setInitialProperties({{QStringLiteral("controller"), QVariant::fromValue(&list)}});
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(390, 844);
    view.setSource(QUrl(
        QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Scripts/ScriptsListPage.qml")));
    if (!view.rootObject()) {
        qWarning("the list's page does not load");
        return 1;
    }
    view.show();
    if (!QTest::qWaitForWindowExposed(&view))
        return 1;
    // Whatever the first frames cost is not the reload's.
    QSignalSpy swapped(&view, &QQuickWindow::frameSwapped);
    if (!swapped.wait(5000))
        return 1;

    TPStallSampler stalls;
    bool rowsSet = false;
    QObject::connect(list.rows(), &QAbstractItemModel::modelReset, [&] { rowsSet = true; });
    // The first frame rendered after the rows are set, with a row's delegate in it.
    QEventLoop waiting;
    double frameMs = 0;
    QElapsedTimer fetch;
    QObject::connect(&view, &QQuickWindow::frameSwapped, &waiting, [&] {
        if (rowsSet && TPFindShownItem(view.rootObject(), QStringLiteral("row0"))) {
            frameMs = fetch.nsecsElapsed() / 1e6;
            waiting.quit();
        }
    });
    QTimer::singleShot(120000, &waiting, &QEventLoop::quit);
    fetch.start();
    stalls.start();
    list.reloadData();
    waiting.exec();
    stalls.stop();

    TPScriptRowsModel *rows = list.rows();
    const auto pathAt = [rows](int row) {
        return rows->entryAt(row).toObject().value(QLatin1String("path")).toString();
    };
    if (frameMs == 0 || rows->rowCount() != kFolderRows || pathAt(0) != QLatin1String("d0") ||
        !rows->entryAt(0).toObject().value(QLatin1String("dir")).toBool() ||
        pathAt(kFolderRows - 1) != QLatin1String("f09989.lua")) {
        qWarning("the list does not show the folder's %d rows", kFolderRows);
        return 1;
    }
    qInfo("%.1f %.1f", frameMs, stalls.longestMs());
    return 0;
}

// A loopback server that answers each connection's request with the prepared listing, sent
// from a thread of its own in as few writes as the socket allows, so that the figures are
// the client's and not the server's.
class ListingServer
{
public:
    explicit ListingServer(const QByteArray &body)
        : m_answer("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
                   QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body)
    {
        m_listener = TPListenOnLoopback(m_port, 4);
        if (m_listener < 0)
            qFatal("no loopback port for the engine");
        m_thread = std::thread([this] { serve(); });
    }
    ~ListingServer()
    {
        ::shutdown(m_listener, SHUT_RDWR);
        ::close(m_listener);
        m_thread.join();
    }
    quint16 port() const { return m_port; }

private:
    void serve()
    {
        for (;;) {
            const int connection = ::accept(m_listener, nullptr, nullptr);
            if (connection < 0)
                return;
            QByteArray request;
            char chunk[4096];
            while (!request.contains("\r\n\r\n")) {
                const ssize_t received = ::recv(connection, chunk, sizeof chunk, 0);
                if (received <= 0)
                    break;
                request.append(chunk, received);
            }
            for (qsizetype sent = 0; sent < m_answer.size();) {
                const ssize_t written =
                    ::send(connection, m_answer.constData() + sent, m_answer.size() - sent, 0);
                if (written <= 0)
                    break;
                sent += written;
            }
            ::close(connection);
        }
    }

    QByteArray m_answer;
    int m_listener = -1;
    quint16 m_port = 0;
    std::thread m_thread;
};

// Runs this program as a fresh client process in `mode` against the engine on `port`, and
// returns the `count` figures it printed; a client that failed ends the benchmark.
QStringList runClient(const QString &mode, quint16 port, int count)
{
    QProcess client;
    client.setProcessChannelMode(QProcess::SeparateChannels);
    client.start(QCoreApplication::applicationFilePath(), {mode, QString::number(port)});
    client.waitForFinished(-1);
    // The figures are the last line; the platform may warn before it.
    const QStringList figures = QString::fromLocal8Bit(client.readAllStandardError())
                                    .trimmed()
                                    .split(u'\n')
                                    .last()
                                    .split(u' ');
    if (client.exitCode() != 0 || figures.size() != count)
        qFatal("the client failed: %s", qPrintable(figures.join(u' ')));
    return figures;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 3 && QByteArray(argv[1]) == "--folder-client")
        return measureFolderClient(argc, argv, quint16(QByteArray(argv[2]).toUInt()));
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == QLatin1String("--client"))
        return measureClient(quint16(arguments.at(2).toUInt()));
    if (arguments.size() == 3 && arguments.at(1) == QLatin1String("--requests-client"))
        return measureRequests(quint16(arguments.at(2).toUInt()));

    // Entry counts, given as arguments or by default these four; the last makes a listing of
    // about 100 MB (46 bytes an entry).
    QList<qint64> sizes = {1000, 100000, 1000000, 2180000};
    if (arguments.size() > 1) {
        sizes.clear();
        for (const QString &argument : arguments.mid(1))
            sizes.append(argument.toLongLong());
    }
    for (const qint64 entries : sizes) {
        const QByteArray body = listing(entries);
        const ListingServer engine(body);
        QList<double> fetchMs;
        double worstStallMs = 0;
        double peakMb = 0;
        for (int run = 0; run < kRuns; ++run) {
            const QStringList figures = runClient(QStringLiteral("--client"), engine.port(), 3);
            fetchMs.append(figures.at(0).toDouble());
            worstStallMs = std::max(worstStallMs, figures.at(1).toDouble());
            peakMb = std::max(peakMb, figures.at(2).toDouble());
        }
        std::sort(fetchMs.begin(), fetchMs.end());
        qInfo(
            "listing entries=%lld body_mb=%.1f fetch_to_rows_ms=%.1f main_thread_max_stall_ms=%.1f "
            "peak_rss_mb=%.1f",
            entries, body.size() / 1e6, fetchMs.at(kRuns / 2), worstStallMs, peakMb);
    }

    {
        const QByteArray body = folderListing();
        const ListingServer engine(body);
        QList<double> frameMs;
        double worstStallMs = 0;
        for (int run = 0; run < kRuns; ++run) {
            const QStringList figures =
                runClient(QStringLiteral("--folder-client"), engine.port(), 2);
            frameMs.append(figures.at(0).toDouble());
            worstStallMs = std::max(worstStallMs, figures.at(1).toDouble());
        }
        std::sort(frameMs.begin(), frameMs.end());
        qInfo("listing_folder entries=%d rows=%d fetch_to_frame_ms=%.1f "
              "main_thread_max_stall_ms=%.1f",
              kFolderEntries, kFolderRows, frameMs.at(kRuns / 2), worstStallMs);
    }

    // The engine answers on as many connections as the client opens, each request as it
    // comes, on a connection kept open.
    TPRawServer engine([](TPRawConnection &connection) {
        for (;;) {
            const QByteArray request = connection.readRequest();
            const QByteArray script = scriptFor(request.split(' ').value(1));
            if (request.isEmpty() ||
                !connection.write("HTTP/1.1 200 OK\r\nContent-Length: " +
                                  QByteArray::number(script.size()) + "\r\n\r\n" + script))
                return;
        }
    });
    if (!engine.startAsTheEngine())
        qFatal("no loopback port for the engine");
    QList<double> allDoneMs;
    int peakThreads = 0;
    int idleThreads = 0;
    double peakGrowthMb = 0;
    for (int run = 0; run < kRuns; ++run) {
        const QStringList figures =
            runClient(QStringLiteral("--requests-client"), engine.port(), 4);
        allDoneMs.append(figures.at(0).toDouble());
        peakThreads = std::max(peakThreads, figures.at(1).toInt());
        peakGrowthMb = std::max(peakGrowthMb, figures.at(2).toDouble());
        idleThreads = std::max(idleThreads, figures.at(3).toInt());
    }
    std::sort(allDoneMs.begin(), allDoneMs.end());
    qInfo("requests concurrent=%d all_done_ms=%.1f peak_threads=%d peak_rss_growth_mb=%.1f",
          kConcurrentRequests, allDoneMs.at(kRuns / 2), peakThreads, peakGrowthMb);
    qInfo("  detail idle_threads=%d", idleThreads);
    return 0;
}

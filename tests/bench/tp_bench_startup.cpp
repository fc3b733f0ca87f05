// Start-up against a bare window: tp-bench-startup [RUNS]
//
// Starts the app (with a device name stored, against a development engine on 127.0.0.1:8090
// serving the sample scripts) and a bare Qt Quick Controls window built by the project, one
// after the other, RUNS times each (15 by default), on the offscreen platform; each run
// starts with the next program in turn, so that none always starts first. For each run
// it takes the time from starting the process to the first frame its render loop reports,
// and the process's resident memory 1.5 s after that frame. It prints the medians:
//
//   startup first_frame_ms=X bare_first_frame_ms=Y ratio=R idle_rss_mb=M bare_idle_rss_mb=B
//     detail bare_libcurl_first_frame_ms=Y2 bare_libcurl_ratio=R2 bare_libcurl_idle_rss_mb=B2
//     detail floor_first_frame_ms=X floor_ratio=R floor_idle_rss_mb=M floor_rss_ratio=Q
//
// The first detail line is the same bare window with libcurl loaded and set up (alternating
// with the others), and its ratio to the bare window. The second is the app's floor: the
// bare window with every library the app loads, set up as the app sets them up before its
// first frame; its ratios are the app's against it.
//
// It fails instead of printing when a process shows no frame, or when the app never asked
// the engine for its listing (it did not get as far as its first screen).
#include "tpdevengine.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <optional>

namespace {

struct Run
{
    double firstFrameMs = 0;
    double idleRssMb = 0;
};

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    const qsizetype middle = values.size() / 2;
    return values.size() % 2 ? values.at(middle) : (values.at(middle - 1) + values.at(middle)) / 2;
}

// The resident memory of a running process, in MB, from the kernel's account of it.
std::optional<double> residentMb(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return std::nullopt;
    static const QRegularExpression rss(QStringLiteral(R"(VmRSS:\s+(\d+) kB)"));
    const QRegularExpressionMatch match = rss.match(QString::fromLatin1(status.readAll()));
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1).toDouble() / 1024.0;
}

// Runs `program` until 1.5 s after its first frame; nothing when it shows none in 20 s.
std::optional<Run> measure(const QString &program, const QStringList &arguments,
                           const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.setStandardOutputFile(QProcess::nullDevice());
    std::optional<Run> run;
    QByteArray errors;
    QElapsedTimer sinceStart;
    QEventLoop loop;
    QTimer idle;
    idle.setSingleShot(true);
    idle.setInterval(1500);
    QObject::connect(&idle, &QTimer::timeout, &loop, [&] {
        if (const std::optional<double> rss = residentMb(process.processId()))
            run->idleRssMb = *rss;
        else
            run.reset();
        loop.quit();
    });
    QObject::connect(&process, &QProcess::readyReadStandardError, &loop, [&] {
        const qint64 now = sinceStart.nsecsElapsed();
        errors += process.readAllStandardError();
        if (run || !errors.contains("Frame rendered with"))
            return;
        run = Run{double(now) / 1e6, 0};
        idle.start();
    });
    QObject::connect(&process, &QProcess::finished, &loop, [&] {
        run.reset();
        loop.quit();
    });
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    sinceStart.start();
    process.start(program, arguments);
    loop.exec();
    if (!run || run->idleRssMb <= 0)
        fprintf(stderr, "%s showed no frame or ended before its memory was read:\n%s\n",
                qPrintable(program), errors.constData());
    // Stopping it is not an early end.
    QObject::disconnect(&process, nullptr, &loop, nullptr);
    process.kill();
    process.waitForFinished();
    if (!run || run->idleRssMb <= 0)
        return std::nullopt;
    return run;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const int runs = argc > 1 ? QByteArray(argv[1]).toInt() : 15;
    if (runs < 1) {
        fprintf(stderr, "usage: tp-bench-startup [RUNS]\n");
        return 2;
    }

    QTemporaryDir work;
    const QString scripts = work.filePath(QStringLiteral("scripts"));
    const QString owner = work.filePath(QStringLiteral("owner"));
    if (!work.isValid() || !QDir().mkpath(scripts) ||
        !QDir().mkpath(owner + QStringLiteral("/var/tmp"))) {
        fprintf(stderr, "cannot make a work folder\n");
        return 1;
    }
    const QDir samples(QStringLiteral(TP_SAMPLES_DIR));
    QDirIterator sample(samples.path(), QDir::Files, QDirIterator::Subdirectories);
    while (sample.hasNext()) {
        const QString from = sample.next();
        const QString to = scripts + u'/' + samples.relativeFilePath(from);
        QDir().mkpath(QFileInfo(to).path());
        QFile::copy(from, to);
    }
    // A device name is stored: the app starts on its list, not on the first-run prompt.
    QFile name(owner + QStringLiteral("/var/tmp/tapper_owner.txt"));
    if (!name.open(QIODevice::WriteOnly) || name.write("Bench") != 5) {
        fprintf(stderr, "cannot write the device name\n");
        return 1;
    }
    name.close();

    TPDevEngine engine(scripts);
    int listings = 0;
    QObject::connect(&engine, &TPDevEngine::logLine, &engine, [&listings](const QString &line) {
        if (line.contains(QLatin1String("GET /scripts ")))
            ++listings;
    });
    if (engine.listen(8090) != 8090) {
        fprintf(stderr, "127.0.0.1:8090 is taken: stop the engine that listens there first\n");
        return 1;
    }

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("QT_LOGGING_RULES"),
                       QStringLiteral("qt.scenegraph.time.renderloop=true"));
    // The app's settings and data go to the work folder, never the user's.
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), work.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), work.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), work.filePath(QStringLiteral("cache")));

    // The four programs of a run, and what each measured over all runs.
    struct Program
    {
        QString path;
        QStringList arguments;
        QList<double> frames;
        QList<double> rss;
    };
    Program programs[] = {
        {QStringLiteral(TP_APP_PATH), {QStringLiteral("--owner-root"), owner}, {}, {}},
        {QStringLiteral(TP_BARE_PATH), {}, {}, {}},
        {QStringLiteral(TP_BARE_LIBCURL_PATH), {}, {}, {}},
        {QStringLiteral(TP_BARE_FLOOR_PATH), {}, {}, {}},
    };
    const qsizetype programCount = std::size(programs);
    for (int i = 0; i < runs; ++i) {
        const int listingsBefore = listings;
        // Whichever program starts first in a run starts about 2 ms slower than it would
        // later in the run, so each run starts with the next program in turn.
        for (qsizetype turn = 0; turn < programCount; ++turn) {
            Program &program = programs[(i + turn) % programCount];
            const std::optional<Run> run = measure(program.path, program.arguments, environment);
            if (!run) {
                fprintf(stderr, "a run ended before its figures were taken\n");
                return 1;
            }
            program.frames.append(run->firstFrameMs);
            program.rss.append(run->idleRssMb);
        }
        if (listings == listingsBefore) {
            fprintf(stderr, "the app never asked the engine for its listing\n");
            return 1;
        }
    }
    const Program &app = programs[0], &bare = programs[1], &curl = programs[2],
                  &floor = programs[3];
    const double appFrame = median(app.frames);
    const double bareFrame = median(bare.frames);
    printf("startup first_frame_ms=%.1f bare_first_frame_ms=%.1f ratio=%.2f idle_rss_mb=%.1f "
           "bare_idle_rss_mb=%.1f\n",
           appFrame, bareFrame, appFrame / bareFrame, median(app.rss), median(bare.rss));
    const double curlFrame = median(curl.frames);
    printf("  detail bare_libcurl_first_frame_ms=%.1f bare_libcurl_ratio=%.2f "
           "bare_libcurl_idle_rss_mb=%.1f\n",
           curlFrame, curlFrame / bareFrame, median(curl.rss));
    const double floorFrame = median(floor.frames);
    printf("  detail floor_first_frame_ms=%.1f floor_ratio=%.2f floor_idle_rss_mb=%.1f "
           "floor_rss_ratio=%.2f\n",
           floorFrame, appFrame / floorFrame, median(floor.rss),
           median(app.rss) / median(floor.rss));
    return 0;
}

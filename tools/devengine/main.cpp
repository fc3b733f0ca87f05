#include "tpdevengine.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTime>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};

void onTerminationSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalPipe[1], &byte, 1);
}

// SIGINT and SIGTERM end the event loop, so running scripts are stopped before the exit.
void quitOnTerminationSignals(QCoreApplication &app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    auto *notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    std::signal(SIGINT, onTerminationSignal);
    std::signal(SIGTERM, onTerminationSignal);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tp-devengine"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Serves the script engine's HTTP protocol over a folder, on 127.0.0.1."));
    parser.addHelpOption();
    const QCommandLineOption rootOption(
        QStringLiteral("root"), QStringLiteral("The script root folder."), QStringLiteral("DIR"));
    const QCommandLineOption portOption(QStringLiteral("port"),
                                        QStringLiteral("The port (0 picks a free one)."),
                                        QStringLiteral("PORT"), QStringLiteral("8090"));
    parser.addOption(rootOption);
    parser.addOption(portOption);
    parser.process(app);

    QTextStream out(stdout);
    QTextStream err(stderr);
    const QString root = parser.value(rootOption);
    bool portIsNumber = false;
    const uint port = parser.value(portOption).toUInt(&portIsNumber);
    if (root.isEmpty() || !QDir(root).exists() || !portIsNumber || port > 65535) {
        err << "usage: tp-devengine --root DIR [--port 8090] (DIR must exist)\n";
        return 2;
    }

    TPDevEngine engine(root);
    QObject::connect(&engine, &TPDevEngine::logLine, &app, [&out](const QString &line) {
        out << QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz")) << ' ' << line
            << Qt::endl;
    });
    const quint16 listening = engine.listen(quint16(port));
    if (listening == 0) {
        err << "tp-devengine: cannot listen on 127.0.0.1:" << port << '\n';
        return 1;
    }
    quitOnTerminationSignals(app);
    out << "tp-devengine: serving " << QDir(root).absolutePath()
        << " on http://127.0.0.1:" << listening << Qt::endl;
    const int status = QCoreApplication::exec();
    out << "tp-devengine: stopped" << Qt::endl;
    return status;
}

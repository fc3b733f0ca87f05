#include "engine/tpengineapi.h"

#include "tptestutil.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

// The tp-devengine program itself, as the run command starts it.
class TestTPDevEngineProcess : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    // Starts the engine on a free port and returns it, or 0.
    quint16 startEngine(QProcess &process)
    {
        process.setProgram(QStringLiteral(TP_DEVENGINE_PATH));
        process.setArguments({QStringLiteral("--root"), m_dir.path(), QStringLiteral("--port"),
                              QStringLiteral("0")});
        process.start();
        if (!process.waitForStarted(5000))
            return 0;
        const QRegularExpression ready(QStringLiteral("on http://127\\.0\\.0\\.1:(\\d+)"));
        QByteArray seen;
        while (process.waitForReadyRead(5000)) {
            seen += process.readAllStandardOutput();
            const auto match = ready.match(QString::fromUtf8(seen));
            if (match.hasMatch())
                return quint16(match.captured(1).toUInt());
        }
        return 0;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QFile loop(m_dir.filePath(QStringLiteral("loop.lua")));
        QVERIFY(loop.open(QIODevice::WriteOnly));
        loop.write("while true do end");
    }

    void endlessScriptIsStoppedWhenTheEngineExits()
    {
        QProcess process;
        const quint16 port = startEngine(process);
        QVERIFY(port != 0);
        TPPointEngineAPIAt(port);
        bool done = false;
        TPEngineAPI::Error error = TPError{};
        TPEngineAPI::runFile(QStringLiteral("loop.lua"), [&](const TPEngineAPI::Error &e) {
            error = e;
            done = true;
        });
        QTRY_VERIFY(done);
        QCOMPARE(error, std::nullopt);

        process.terminate();
        QVERIFY(process.waitForFinished(10000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        const QString log = QString::fromUtf8(process.readAllStandardOutput());
        QVERIFY2(log.contains(QStringLiteral("[loop.lua] stopped")), qPrintable(log));
        QVERIFY(log.contains(QStringLiteral("tp-devengine: stopped")));
    }

    void missingRootIsAUsageError()
    {
        QProcess process;
        process.start(QStringLiteral(TP_DEVENGINE_PATH),
                      {QStringLiteral("--root"), m_dir.filePath(QStringLiteral("nope"))});
        QVERIFY(process.waitForFinished(5000));
        QCOMPARE(process.exitCode(), 2);
        QVERIFY(process.readAllStandardError().contains("usage"));
    }

    void takenPortIsReportedNotIgnored()
    {
        QTcpServer holder;
        QVERIFY(holder.listen(QHostAddress::LocalHost, 0));
        QProcess process;
        process.start(QStringLiteral(TP_DEVENGINE_PATH),
                      {QStringLiteral("--root"), m_dir.path(), QStringLiteral("--port"),
                       QString::number(holder.serverPort())});
        QVERIFY(process.waitForFinished(5000));
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(process.readAllStandardError().contains("cannot listen"));
    }
};

QTEST_GUILESS_MAIN(TestTPDevEngineProcess)
#include "tst_tpdevengine_process.moc"

#include "foundation/tpwhilealive.h"

#include <QTest>

#include <functional>
#include <memory>

// A completion held past its object's life does nothing; before, it gets the object and the
// arguments it is called with.
class TestTPWhileAlive : public QObject
{
    Q_OBJECT

private slots:
    void runsWithTheObjectAndTheArgumentsWhileItLives()
    {
        QObject owner;
        QObject *seen = nullptr;
        QString text;
        int number = 0;
        const std::function<void(const QString &, int)> completion =
            TPWhileAlive(&owner, [&](QObject *object, const QString &s, int n) {
                seen = object;
                text = s;
                number = n;
            });
        completion(QStringLiteral("done"), 7);
        QCOMPARE(seen, &owner);
        QCOMPARE(text, QStringLiteral("done"));
        QCOMPARE(number, 7);
    }

    void doesNothingOnceTheObjectIsGone()
    {
        auto owner = std::make_unique<QObject>();
        int calls = 0;
        const std::function<void()> completion =
            TPWhileAlive(owner.get(), [&calls](QObject *) { ++calls; });
        owner.reset();
        completion();
        QCOMPARE(calls, 0);
    }
};

QTEST_GUILESS_MAIN(TestTPWhileAlive)
#include "tst_tpwhilealive.moc"

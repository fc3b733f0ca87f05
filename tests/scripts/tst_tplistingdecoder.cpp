#include "engine/tpengineapi.h"
#include "scripts/tplistingdecoder.h"
#include "scripts/tpscripttree.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

namespace {

// What the app read before the decoder: Qt's reader and the tree's filter.
std::optional<QJsonArray> reference(const QByteArray &body, const QString &folder)
{
    const std::optional<QJsonArray> entries = TPEngineAPI::listingEntries(body);
    if (!entries)
        return std::nullopt;
    return TPScriptTree::filterChildrenOf(folder, *entries);
}

QStringList names(const std::optional<QJsonArray> &children)
{
    QStringList result;
    if (children) {
        for (const QJsonValue &entry : *children)
            result.append(TPScriptTree::entryName(entry));
    }
    return result;
}

// The records as sorted JSON texts: the same records, whatever the order of equal names.
QByteArrayList records(const std::optional<QJsonArray> &children)
{
    QByteArrayList texts;
    for (const QJsonValue &entry : *children)
        texts.append(QJsonDocument(entry.toObject()).toJson(QJsonDocument::Compact));
    std::sort(texts.begin(), texts.end());
    return texts;
}

// The children read by a stream that is given the body in parts, as it arrives, cut at
// places chosen by `random`: mostly small parts, now and then a large one.
std::optional<QJsonArray> readInParts(const QByteArray &body, const QString &folder,
                                      QRandomGenerator &random)
{
    TPListingDecoder::Stream stream(folder);
    QByteArray received;
    for (qsizetype at = 0; at < body.size();) {
        const qsizetype part =
            random.bounded(8) == 0 ? 1 + random.bounded(100000) : 1 + random.bounded(2000);
        received.append(body.mid(at, part));
        at += part;
        stream.read(received);
    }
    return stream.finish(received);
}

} // namespace

// The listing decoder must give exactly what Qt's reader and the tree filter give.
class TestTPListingDecoder : public QObject
{
    Q_OBJECT

    void compareWithReference(const QByteArray &body, const QString &folder)
    {
        const std::optional<QJsonArray> expected = reference(body, folder);
        // Read whole, and read while it arrives.
        const std::optional<QJsonArray> ways[] = {TPListingDecoder::childrenOf(body, folder),
                                                  readInParts(body, folder, m_random)};
        for (const std::optional<QJsonArray> &decoded : ways) {
            QVERIFY2(decoded.has_value() == expected.has_value(), body.left(200).constData());
            if (!expected)
                continue;
            // Names that compare equal have no defined order; everything else must match.
            QCOMPARE(decoded->size(), expected->size());
            QCOMPARE(names(decoded), names(expected));
            QCOMPARE(records(decoded), records(expected));
        }
    }

    QRandomGenerator m_random{2024};

private slots:
    void theTreeEdgeCasesGiveTheSameChildren_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("folder");
        QTest::newRow("root order")
            << QByteArray(
                   "{\"entries\":[{\"path\":\"b.lua\",\"dir\":false},{\"path\":\"A\",\"dir\":true},"
                   "{\"path\":\"a/x.lua\"},{\"path\":\"c\",\"dir\":true}]}")
            << QString();
        QTest::newRow("folder a")
            << QByteArray("{\"entries\":[{\"path\":\"a\",\"dir\":true},{\"path\":\"a/x.lua\"},"
                          "{\"path\":\"a/sub\",\"dir\":true},{\"path\":\"a/sub/"
                          "y.lua\"},{\"path\":\"ab/z.lua\"}]}")
            << QStringLiteral("a");
        QTest::newRow("leading slash")
            << QByteArray("{\"entries\":[{\"path\":\"/x.lua\"}]}") << QString();
        QTest::newRow("trailing and doubled slash")
            << QByteArray("{\"entries\":[{\"path\":\"a/\"},{\"path\":\"a//x.lua\"}]}")
            << QStringLiteral("a");
        QTest::newRow("path missing empty or not text")
            << QByteArray("{\"entries\":[{\"dir\":true},{\"path\":\"\"},{\"path\":3},"
                          "{\"path\":null},{\"path\":[\"x\"]},{\"path\":\"ok.lua\"}]}")
            << QString();
        QTest::newRow("case-sensitive prefix")
            << QByteArray("{\"entries\":[{\"path\":\"a/x.lua\"},{\"path\":\"A/y.lua\"}]}")
            << QStringLiteral("A");
        QTest::newRow("sort ignores case, no numeric order")
            << QByteArray("{\"entries\":[{\"path\":\"Zeta.lua\"},{\"path\":\"alpha.lua\"},"
                          "{\"path\":\"9.lua\"},{\"path\":\"10.lua\"}]}")
            << QString();
        QTest::newRow("truth of dir")
            << QByteArray("{\"entries\":[{\"path\":\"n\",\"dir\":1},{\"path\":\"z\",\"dir\":0},"
                          "{\"path\":\"y\",\"dir\":\"yes\"},{\"path\":\"t\",\"dir\":\" true\"},"
                          "{\"path\":\"f\",\"dir\":\"false\"},{\"path\":\"s\",\"dir\":\"007\"},"
                          "{\"path\":\"o\",\"dir\":{}},{\"path\":\"l\",\"dir\":null},{\"path\":"
                          "\"x\",\"dir\":0.0}]}")
            << QString();
        QTest::newRow("duplicates")
            << QByteArray("{\"entries\":[{\"path\":\"a.lua\"},{\"path\":\"a.lua\",\"x\":1},{"
                          "\"path\":\"a\",\"dir\":true}]}")
            << QString();
        QTest::newRow("repeated members: the last wins")
            << QByteArray("{\"entries\":[{\"path\":\"a/"
                          "b\",\"path\":\"c.lua\",\"dir\":true,\"dir\":false}]}")
            << QString();
        QTest::newRow("repeated entries: the last wins")
            << QByteArray("{\"entries\":[{\"path\":\"a.lua\"}],\"entries\":[{\"path\":\"b.lua\"}]}")
            << QString();
        QTest::newRow("escaped key and value")
            << QByteArray("{\"entries\":[{\"p\\u0061th\":\"t\\u1ec7p.lua\",\"dir\":false}]}")
            << QString();
        QTest::newRow("non-object entries")
            << QByteArray("{\"entries\":[1,\"a\",null,[],{\"path\":\"k.lua\"}]}") << QString();
        QTest::newRow("other members")
            << QByteArray("{\"ok\":true,\"entries\":[{\"path\":\"a.lua\",\"size\":12,\"tags\":["
                          "\"x\",{\"y\":null}]}],\"n\":-1.5e3}")
            << QString();
        QTest::newRow("empty") << QByteArray("{\"entries\":[]}") << QString();
        QTest::newRow("no match") << QByteArray("{\"entries\":[{\"path\":\"q/r\"}]}")
                                  << QStringLiteral("z");
    }

    void theTreeEdgeCasesGiveTheSameChildren()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, folder);
        compareWithReference(body, folder);
    }

    void everyInvalidBodyIsRefused_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("not json") << QByteArray("<html>");
        QTest::newRow("array") << QByteArray("[]");
        QTest::newRow("no entries") << QByteArray("{\"items\":[]}");
        QTest::newRow("entries not an array") << QByteArray("{\"entries\":{}}");
        QTest::newRow("entries null") << QByteArray("{\"entries\":null}");
        QTest::newRow("cut short") << QByteArray("{\"entries\":[{\"path\":\"a.lua\"}");
        QTest::newRow("trailing text") << QByteArray("{\"entries\":[]} x");
        QTest::newRow("bad literal elsewhere")
            << QByteArray("{\"entries\":[{\"path\":\"a\",\"x\":tru}]}");
        QTest::newRow("bad number elsewhere") << QByteArray("{\"n\":01,\"entries\":[]}");
        QTest::newRow("trailing comma") << QByteArray("{\"entries\":[{\"path\":\"a\"},]}");
        QTest::newRow("not utf-8") << QByteArray("{\"entries\":[{\"path\":\"\xff\"}]}");
    }

    void everyInvalidBodyIsRefused()
    {
        QFETCH(QByteArray, body);
        QVERIFY(!reference(body, QString()).has_value());
        QVERIFY(!TPListingDecoder::childrenOf(body, QString()).has_value());
    }

    void aBodyOnlyQtAcceptsIsReadAsQtReadsIt()
    {
        // Qt's reader takes an unknown escape as the character itself; folders come first.
        const QByteArray body = "{\"entries\":[{\"path\":\"\\q.lua\"},"
                                "{\"path\":\"\\qdir\",\"dir\":true}]}";
        const auto children = TPListingDecoder::childrenOf(body, QString());
        QVERIFY(children);
        QCOMPARE(*children,
                 QJsonDocument::fromJson("[{\"path\":\"qdir\",\"dir\":true},{\"path\":\"q.lua\"}]")
                     .array());
    }

    void theRecordsAreTheListingsOwn()
    {
        const QByteArray body = "{\"entries\":[{\"path\":\"a.lua\",\"dir\":false,\"size\":3,"
                                "\"meta\":{\"k\":[1,2]}}]}";
        const auto children = TPListingDecoder::childrenOf(body, QString());
        QVERIFY(children);
        QCOMPARE(children->size(), 1);
        QCOMPARE(children->at(0), reference(body, QString())->at(0));
        QCOMPARE(children->at(0).toObject().value(QLatin1String("size")).toInt(), 3);
    }

    // A large listing is read a part at a time; the parts must join exactly, whatever the
    // elements hold (brackets, commas and quotes in texts, nested values) and wherever a
    // fault falls.
    void aListingReadInPartsGivesWhatTheWholeGives()
    {
        QByteArray elements;
        for (int i = 0; i < 40000; ++i) {
            switch (i % 5) {
            case 0:
                elements += "{\"path\":\"p/f" + QByteArray::number(i) + ".lua\",\"dir\":false},";
                break;
            case 1:
                elements += "{\"path\":\"p/d" + QByteArray::number(i) + "\",\"dir\":true},";
                break;
            case 2:
                elements += "{\"path\":\"p/],{\\\"[" + QByteArray::number(i) + "\\\\\"},";
                break;
            case 3:
                elements += "{\"meta\":[[1,{\"a\":\"]\"}],[]],\"path\":\"p/q" +
                            QByteArray::number(i) + "\"} ,\n";
                break;
            default:
                elements += "\"p/text" + QByteArray::number(i) + "\",";
                break;
            }
        }
        elements.chop(1);
        const QByteArray whole = " {\"entries\" : [" + elements + "] } ";
        QVERIFY(whole.size() > 1000000);
        compareWithReference(whole, QStringLiteral("p"));
        compareWithReference(whole, QString());
        QCOMPARE(TPListingDecoder::childrenOf(whole, QStringLiteral("p"))->size(), 32000);

        const QByteArray faults[] = {",", ",,", "]", "[", "\"", "}", "x", " "};
        QRandomGenerator random(77);
        for (int round = 0; round < 24; ++round) {
            QByteArray body = whole;
            const qsizetype at = 16 + random.bounded(body.size() - 32);
            body.insert(at, faults[round % 8]);
            compareWithReference(body, QStringLiteral("p"));
        }
        compareWithReference(" {\"entries\" : [" + elements + ",] } ", QStringLiteral("p"));
        compareWithReference(" {\"entries\" : [" + elements + "]} ,", QStringLiteral("p"));
    }

    // The decoder guesses where a part of the listing ends from the "},{" between two
    // entries; a guess inside a name, or inside a nested value, must not change what is read.
    void wrongGuessesOfWhereAPartEndsChangeNothing()
    {
        QByteArray elements;
        for (int i = 0; i < 30000; ++i) {
            const QByteArray number = QByteArray::number(i);
            if (i % 3 == 0)
                elements += "{\"path\":\"p/a},{b" + number + ".lua\",\"dir\":false},";
            else if (i % 3 == 1)
                elements += "{\"path\":\"p/q\\\"},{\\\"" + number + "\",\"dir\":true},";
            else
                elements += "{\"x\":[{},{}],\"path\":\"p/n" + number + "\"},";
        }
        elements.chop(1);
        const QByteArray body = "{\"entries\":[" + elements + "]}";
        compareWithReference(body, QStringLiteral("p"));
        QCOMPARE(TPListingDecoder::childrenOf(body, QStringLiteral("p"))->size(), 30000);
    }

    // Keys are compared in place unless they hold an escape; escaped keys, good and bad,
    // read as Qt's reader reads them.
    void escapedKeysReadAsQtReadsThem_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("escaped path key")
            << QByteArray("{\"entries\":[{\"p\\u0061th\":\"a.lua\",\"dir\":false}]}");
        QTest::newRow("escaped entries key")
            << QByteArray("{\"\\u0065ntries\":[{\"path\":\"a.lua\"}]}");
        QTest::newRow("escaped quote in a key")
            << QByteArray("{\"entries\":[{\"pa\\\"th\":\"a.lua\",\"path\":\"b.lua\"}]}");
        QTest::newRow("bad escape in a key")
            << QByteArray("{\"entries\":[{\"x\\uZZZZ\":1,\"path\":\"a.lua\"}]}");
        QTest::newRow("unknown escape in a key")
            << QByteArray("{\"entries\":[{\"x\\q\":1,\"path\":\"a.lua\"}]}");
        QTest::newRow("path key as a prefix") << QByteArray(
            "{\"entries\":[{\"paths\":\"x.lua\",\"pat\":\"y.lua\",\"path\":\"z.lua\"}]}");
    }
    void escapedKeysReadAsQtReadsThem()
    {
        QFETCH(QByteArray, body);
        compareWithReference(body, QString());
    }

    // A listing written with blanks everywhere JSON allows them reads the same.
    void aListingWithBlanksReadsTheSame()
    {
        QByteArray elements;
        for (int i = 0; i < 20000; ++i)
            elements += "\n  {\n    \"path\" : \"p/f" + QByteArray::number(i) +
                        ".lua\",\n    \"dir\" : false\n  } ,";
        elements.chop(1);
        compareWithReference("\r\n{ \"entries\" :\t[" + elements + "\n ]\n}\n\n",
                             QStringLiteral("p"));
    }

    // Random listings, some of them broken, read the same both ways.
    void randomListingsReadTheSameBothWays()
    {
        QRandomGenerator random(4242);
        const char *paths[] = {"a",     "a/b.lua", "a/c", "a/c/d.lua", "B.lua", "b.lua",
                               "é.lua", "a//x",    "/x",  "a/",        "",      "x y.lua"};
        const char *dirs[] = {"true", "false", "1", "0", "\"yes\"", "\"no\"", "null", "{}"};
        const char *folders[] = {"", "a", "a/c", "B"};
        for (int round = 0; round < 400; ++round) {
            QByteArray body = "{\"entries\":[";
            const int count = random.bounded(12);
            for (int i = 0; i < count; ++i) {
                if (i > 0)
                    body += ',';
                body += "{\"path\":\"" + QByteArray(paths[random.bounded(12)]) + '"';
                if (random.bounded(3) > 0)
                    body += ",\"dir\":" + QByteArray(dirs[random.bounded(8)]);
                body += '}';
            }
            body += "]}";
            if (random.bounded(5) == 0)
                body.remove(random.bounded(body.size()), 1);
            compareWithReference(body, QString::fromLatin1(folders[random.bounded(4)]));
        }
    }
};

QTEST_MAIN(TestTPListingDecoder)
#include "tst_tplistingdecoder.moc"

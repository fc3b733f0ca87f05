#include "editor/tpeditortextbinding.h"

#include "tpdocumenttext.h"

#include <QRandomGenerator>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace {

QString u(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

// An edit buffer shown in a document: what is typed into the document and what the buffer
// changes in code keep the two in step, byte for byte.
class TestTPEditorTextBinding : public QObject
{
    Q_OBJECT

private slots:
    // Random edits, made in a real document the way a view makes them, keep the document
    // and the text in step, and leave every untouched character as it was.
    void randomDocumentEditsKeepTextAndDocumentInStep()
    {
        QRandomGenerator random(20261122);
        const QStringList pieces = {u("\r\n"),   u("\r"),          u("\n"), u("\u2029"),
                                    u("\u2028"), u("\xc2\xa0"),    u("\t"), u("x"),
                                    u("y z"),    u("\xef\xbb\xbf")};
        for (int round = 0; round < 60; ++round) {
            QString start;
            for (int i = 0; i < 30; ++i)
                start += pieces.at(random.bounded(pieces.size()));
            TPEditBuffer buffer;
            buffer.setText(start);
            const TPScriptText &script = buffer.script();
            QTextDocument document;
            document.documentLayout();
            TPEditorTextBinding binding(&buffer);
            binding.bindDocument(&document);
            for (int step = 0; step < 40; ++step) {
                QTextCursor cursor(&document);
                const int length = document.characterCount() - 1;
                const int from = random.bounded(length + 1);
                const int to = std::min(length, from + random.bounded(4));
                cursor.setPosition(from);
                cursor.setPosition(to, QTextCursor::KeepAnchor);
                const int kind = random.bounded(3);
                if (kind == 0)
                    cursor.insertText(pieces.at(random.bounded(pieces.size())));
                else if (kind == 1)
                    cursor.insertBlock();
                else
                    cursor.removeSelectedText();
                QCOMPARE(script.documentText(), TPRawDocumentText(document));
                TPScriptText fresh;
                fresh.setText(script.text());
                QCOMPARE(fresh.lineCount(), script.lineCount());
                for (int line = 0; line < fresh.lineCount(); ++line)
                    QCOMPARE(script.lineStart(line), fresh.lineStart(line));
            }
        }
    }

    // Edits made in code land in the document too, the lines in step.
    void codeEditsLandInTheDocument()
    {
        QRandomGenerator random(7);
        const QStringList pieces = {u("\r\n"), u("\r"), u("\n"), u("a"), u("\u2028")};
        TPEditBuffer buffer;
        buffer.setText(u("a\r\nb\rc\nd"));
        const TPScriptText &script = buffer.script();
        QTextDocument document;
        document.documentLayout();
        TPEditorTextBinding binding(&buffer);
        binding.bindDocument(&document);
        for (int step = 0; step < 300; ++step) {
            const qsizetype from = random.bounded(script.text().size() + 1);
            const qsizetype length =
                std::min<qsizetype>(random.bounded(3), script.text().size() - from);
            buffer.applyStep({{from, script.text().mid(from, length),
                               pieces.at(random.bounded(pieces.size()))}});
            QCOMPARE(TPRawDocumentText(document), script.documentText());
        }
    }

    void aMegabyteTextRoundTripsUnchanged()
    {
        QString text;
        while (text.size() < 1024 * 1024)
            text += u("local x\xc2\xa0= 1\r\n\tprint(x)\r-- \u2028 done\n");
        TPEditBuffer buffer;
        buffer.setText(text);
        const TPScriptText &script = buffer.script();
        QTextDocument document;
        TPEditorTextBinding binding(&buffer);
        binding.bindDocument(&document);
        QCOMPARE(script.text(), text);
        QCOMPARE(TPRawDocumentText(document), script.documentText());
    }
};

QTEST_MAIN(TestTPEditorTextBinding)
#include "tst_tpeditortextbinding.moc"

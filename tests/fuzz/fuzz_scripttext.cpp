// The editor's exact text under arbitrary text and edits. Checks: the text set is the text
// kept, byte for byte; every edit undone gives the text back; the line index covers the
// text (line starts ascending, every offset in exactly one line).
#include "editing/tpscripttext.h"

#include "tpfuzzrequire.h"

namespace {

void requireLinesCover(const TPScriptText &text)
{
    require(text.lineCount() >= 1 && text.lineStart(0) == 0);
    for (int line = 1; line < text.lineCount(); ++line)
        require(text.lineStart(line) > text.lineStart(line - 1));
    for (qsizetype offset = 0; offset <= text.text().size(); offset += 7) {
        const int line = text.lineAt(offset);
        require(text.lineStart(line) <= offset);
        require(line + 1 == text.lineCount() || offset < text.lineStart(line + 1));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const qsizetype units = qsizetype(size / 2);
    const auto *raw = reinterpret_cast<const char16_t *>(data);
    const qsizetype split = units / 2;
    const QString original = QString::fromUtf16(raw, split);
    TPScriptText text;
    text.setText(original);
    require(text.text() == original);
    requireLinesCover(text);

    // The rest of the input is a list of edits: offset, length, then up to 4 units inserted.
    std::vector<TPTextEdit> made;
    for (qsizetype at = split; at + 2 <= units; at += 6) {
        const qsizetype length = text.text().size();
        const qsizetype offset = length == 0 ? 0 : raw[at] % (length + 1);
        const qsizetype removed = raw[at + 1] % (length - offset + 1);
        const QString inserted =
            QString::fromUtf16(raw + at + 2, std::min<qsizetype>(4, units - at - 2));
        made.push_back(text.replace(offset, removed, inserted));
        requireLinesCover(text);
    }
    for (auto edit = made.rbegin(); edit != made.rend(); ++edit)
        text.apply(edit->inverted());
    require(text.text() == original);
    return 0;
}

// Raw bytes from the engine's connection through the HTTP answer reader: given whole, in
// parts whose sizes follow from the bytes themselves, and with a known-length body written
// straight into its block. The first byte says whether the connection then ends. Checks:
// all three ways give the same state, status and body; a whole answer has a final status
// and room after its body.
#include "tphttpanswer.h"

#include <cstring>

#include "tpfuzzrequire.h"

namespace {

struct Reading
{
    TPHttpAnswer::State state;
    int status;
    QByteArray body;
    friend bool operator==(const Reading &, const Reading &) = default;
};

Reading outcome(TPHttpAnswer &answer, bool close)
{
    if (close)
        answer.closed();
    return {answer.state(), answer.status(), answer.body()};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const bool close = data[0] & 1;
    const char *bytes = reinterpret_cast<const char *>(data + 1);
    const qsizetype length = qsizetype(size - 1);

    TPHttpAnswer whole;
    whole.received(bytes, length);
    const Reading expected = outcome(whole, close);

    TPHttpAnswer inParts;
    for (qsizetype at = 0; at < length;) {
        const qsizetype part = std::min<qsizetype>(1 + uint8_t(bytes[at]) % 13, length - at);
        inParts.received(bytes + at, part);
        at += part;
    }
    require(outcome(inParts, close) == expected);

    TPHttpAnswer direct;
    for (qsizetype at = 0; at < length;) {
        qsizetype room = 0;
        if (char *space = direct.directSpace(room)) {
            const qsizetype part = std::min({room, length - at, qsizetype(7)});
            std::memcpy(space, bytes + at, size_t(part));
            direct.directWritten(part);
            at += part;
        } else {
            direct.received(bytes + at, 1);
            ++at;
        }
    }
    require(outcome(direct, close) == expected);

    if (expected.state == TPHttpAnswer::State::Complete) {
        require(expected.status >= 101 && expected.status <= 999);
        require(whole.body().capacity() - whole.body().size() >= TPHttpAnswer::ReadAheadRoom);
    }
    return 0;
}

// Settings documents built from raw bytes (every value type a stored setting may come back
// as: bools, integers of every width, doubles including NaN and infinities, strings, bytes,
// dates, lists) through the settings document writer. Checks: a body is written exactly
// when every value has a JSON form; a written body is one compact JSON object with the same
// member names, whose bools, integers and strings read back as given.
#include "engine/tpengineapi.h"

#include <QDateTime>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <cstring>

#include "tpfuzzrequire.h"

namespace {

// Reads the fuzzer's bytes front to back; past the end every read gives zeros.
class Bytes
{
public:
    Bytes(const uint8_t *data, size_t size) : m_data(data), m_size(size) {}
    bool atEnd() const { return m_at >= m_size; }
    uint8_t byte() { return atEnd() ? 0 : m_data[m_at++]; }
    template <typename T>
    T number()
    {
        unsigned char raw[sizeof(T)] = {};
        for (unsigned char &part : raw)
            part = byte();
        T value;
        std::memcpy(&value, raw, sizeof value);
        return value;
    }
    QByteArray chunk()
    {
        QByteArray out;
        for (int length = byte() % 24; length > 0; --length)
            out.append(char(byte()));
        return out;
    }

private:
    const uint8_t *m_data;
    size_t m_size;
    size_t m_at = 0;
};

// A value and whether JSON can hold it.
struct Made
{
    QVariant value;
    bool representable;
};

Made makeValue(Bytes &in, int depth)
{
    switch (in.byte() % 10) {
    case 0:
        return {bool(in.byte() & 1), true};
    case 1:
        return {in.number<int>(), true};
    case 2:
        return {in.number<qint64>(), true};
    case 3:
        return {in.number<quint64>(), true};
    case 4: {
        const double number = in.number<double>();
        return {number, std::isfinite(number)};
    }
    case 5:
        return {QString::fromUtf8(in.chunk()), true};
    case 6:
        return {in.chunk(), false};
    case 7:
        return {QDateTime::fromSecsSinceEpoch(in.number<qint32>()), false};
    case 8: {
        QVariantList list;
        bool representable = true;
        for (int count = depth < 3 ? in.byte() % 4 : 0; count > 0; --count) {
            const Made element = makeValue(in, depth + 1);
            list.append(element.value);
            representable = representable && element.representable;
        }
        return {list, representable};
    }
    default:
        return {QVariant::fromValue(nullptr), true};
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Bytes in(data, size);
    QVariantMap document;
    QHash<QString, bool> representableByName; // a later value of a name replaces the earlier
    while (!in.atEnd() && document.size() < 12) {
        const QString name = QString::fromUtf8(in.chunk());
        const Made made = makeValue(in, 0);
        document.insert(name, made.value);
        representableByName.insert(name, made.representable);
    }
    const bool representable = !representableByName.values().contains(false);

    const std::optional<QByteArray> body = TPEngineAPI::settingsBody(document);
    require(body.has_value() == representable);
    if (!body)
        return 0;
    require(!body->contains('\n'));
    QJsonParseError error{};
    const QJsonDocument parsed = QJsonDocument::fromJson(*body, &error);
    require(error.error == QJsonParseError::NoError && parsed.isObject());
    // Members are looked up by iterating: Qt 6.4's QJsonObject::contains() misses some keys
    // outside the Basic Multilingual Plane that are there.
    QHash<QString, QJsonValue> object;
    const QJsonObject parsedObject = parsed.object();
    for (auto it = parsedObject.constBegin(); it != parsedObject.constEnd(); ++it)
        object.insert(it.key(), it.value());
    require(object.size() == document.size());
    for (auto it = document.constBegin(); it != document.constEnd(); ++it) {
        require(object.contains(it.key()));
        const QJsonValue member = object.value(it.key());
        switch (it.value().typeId()) {
        case QMetaType::Bool:
            require(member.isBool() && member.toBool() == it.value().toBool());
            break;
        case QMetaType::Int:
            require(member.isDouble() && member.toInteger() == it.value().toInt());
            break;
        case QMetaType::QString:
            require(member.isString() && member.toString() == it.value().toString());
            break;
        default:
            break;
        }
    }
    return 0;
}

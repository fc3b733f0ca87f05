#include "engine/tpenginesession.h"

#include "engine/tpenginelimits.h"
#include "foundation/tplog.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <curl/curl.h>

#include <algorithm>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {

// The most a block is reserved for up front from a Content-Length; a larger body grows
// past it as it arrives, so that an answer that lies about its length costs nothing.
constexpr qint64 kMaxReservedBody = qint64(256) * 1024 * 1024;
// libcurl's receive buffer for an exchange whose body is read while it arrives: fewer,
// larger pieces for the reader. Other exchanges keep libcurl's small default.
constexpr long kReadWhileArrivingBuffer = 256 * 1024;
// How long the worker sleeps at most when nothing happens; libcurl wakes it sooner for
// its own timers and for new exchanges.
constexpr int kIdleWaitMs = 1000;

// Headers libcurl would add on its own that the engine is never sent: the client sends no
// header of its own. Built once, read by every exchange, and kept for the life of the
// process since exchanges may still be ending while static objects go away.
curl_slist *suppressedHeaders()
{
    static curl_slist *const headers = [] {
        curl_slist *list = nullptr;
        for (const char *header : {"Accept:", "Expect:", "Content-Type:", "User-Agent:"})
            list = curl_slist_append(list, header);
        return list;
    }();
    return headers;
}

// Whether an exchange that ended with `code` was cut off: by the time limit, or by the
// connection ending or failing.
bool isCut(CURLcode code)
{
    return code == CURLE_OPERATION_TIMEDOUT || code == CURLE_PARTIAL_FILE ||
           code == CURLE_GOT_NOTHING || code == CURLE_RECV_ERROR;
}

TPError curlError(CURLcode code, const char *detail)
{
    QString message = QString::fromUtf8(curl_easy_strerror(code));
    const QString more = QString::fromUtf8(detail).trimmed();
    if (!more.isEmpty() && more != message)
        message += QStringLiteral(" (") + more + u')';
    return {QString::fromLatin1(TPEngineSession::ErrorDomain), int(code), message};
}

} // namespace

// One exchange: its libcurl handle, what it sends, and the body as it arrives.
class TPEngineSession::Transfer
{
public:
    Transfer(Request request, BodyReader reader, Delivery delivery)
        : m_request(std::move(request)), m_reader(std::move(reader)),
          m_delivery(std::move(delivery))
    {
        m_clock.start();
    }
    ~Transfer()
    {
        if (m_handle)
            curl_easy_cleanup(m_handle);
    }
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;

    // Makes the exchange's libcurl handle, on the worker thread; false when libcurl has
    // none to give.
    bool open()
    {
        m_handle = curl_easy_init();
        if (m_handle)
            configure();
        return m_handle != nullptr;
    }
    CURL *handle() const { return m_handle; }
    // The exchange was added while every connection was taken: it waits in libcurl's queue.
    void markQueued() { m_queued = true; }

    // The exchange ended with `code`: the answer or the error goes to the delivery.
    void finish(CURLcode code)
    {
        // A head that the time limit or the connection cut short is no answer, so it has no
        // status. A head refused for what it says (by libcurl or by the client) was read,
        // and keeps the status it came with.
        long status = 0;
        if (m_handle && !(isCut(code) && !m_headComplete))
            curl_easy_getinfo(m_handle, CURLINFO_RESPONSE_CODE, &status);
        if (m_refusedAs != CURLE_OK) {
            code = m_refusedAs;
            qstrncpy(m_detail, m_refusal.constData(), sizeof m_detail);
        } else if (code == CURLE_OPERATION_TIMEDOUT && (!m_connectedAfterMs || m_queued)) {
            // libcurl names the wait for a free connection after name resolution, and times
            // a queued exchange from when it left the queue, both of which mislead: most of
            // the time went to waiting for a connection.
            QByteArray why = "timed out after " + QByteArray::number(m_clock.elapsed()) + " ms";
            if (m_connectedAfterMs)
                why += ", " + QByteArray::number(*m_connectedAfterMs) + " ms of them";
            why += " waiting for a connection to the engine";
            qstrncpy(m_detail, why.constData(), sizeof m_detail);
        }
        const std::optional<TPError> error =
            code == CURLE_OK ? std::nullopt : std::optional(curlError(code, m_detail));
        qCInfo(tpEngineLog).noquote()
            << m_request.logName << "status" << status << "ms" << m_clock.elapsed() << "error"
            << (error ? error->localizedDescription : QStringLiteral("-"));
        if (error) {
            m_delivery(std::nullopt, int(status), error);
            return;
        }
        if (m_reader)
            m_reader(m_body, true);
        m_delivery(std::move(m_body), int(status), std::nullopt);
    }

    // The exchange could not be handed to libcurl at all.
    void fail(CURLcode code, const char *detail)
    {
        qstrncpy(m_detail, detail, sizeof m_detail);
        finish(code);
    }

private:
    void configure()
    {
        curl_easy_setopt(m_handle, CURLOPT_PRIVATE, this);
        curl_easy_setopt(m_handle, CURLOPT_ERRORBUFFER, m_detail);
        // The connection goes to the origin; the request line carries the target exactly
        // as given, never re-encoded.
        const QByteArray url = m_request.origin + '/';
        curl_easy_setopt(m_handle, CURLOPT_URL, url.constData());
        curl_easy_setopt(m_handle, CURLOPT_REQUEST_TARGET, m_request.target.constData());
        curl_easy_setopt(m_handle, CURLOPT_PROTOCOLS_STR, "http");
        curl_easy_setopt(m_handle, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1));
        // The engine is on loopback: a proxy named by the environment is never used.
        curl_easy_setopt(m_handle, CURLOPT_PROXY, "");
        curl_easy_setopt(m_handle, CURLOPT_NOPROXY, "*");
        curl_easy_setopt(m_handle, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(m_handle, CURLOPT_HTTPHEADER, suppressedHeaders());
        // The whole-request limit, and the idle limit: less than a byte a second for that
        // long. Neither ends an exchange before its full time.
        curl_easy_setopt(m_handle, CURLOPT_TIMEOUT_MS, long(TPEngineLimits::TimeoutMs));
        curl_easy_setopt(m_handle, CURLOPT_LOW_SPEED_LIMIT, 1L);
        curl_easy_setopt(m_handle, CURLOPT_LOW_SPEED_TIME, long(TPEngineLimits::TimeoutMs / 1000));
        curl_easy_setopt(m_handle, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(MaxBodyBytes));
        curl_easy_setopt(m_handle, CURLOPT_WRITEFUNCTION, &Transfer::write);
        curl_easy_setopt(m_handle, CURLOPT_WRITEDATA, this);
        curl_easy_setopt(m_handle, CURLOPT_HEADERFUNCTION, &Transfer::header);
        curl_easy_setopt(m_handle, CURLOPT_HEADERDATA, this);
        curl_easy_setopt(m_handle, CURLOPT_PREREQFUNCTION, &Transfer::connected);
        curl_easy_setopt(m_handle, CURLOPT_PREREQDATA, this);
        if (m_reader)
            curl_easy_setopt(m_handle, CURLOPT_BUFFERSIZE, kReadWhileArrivingBuffer);
        // A body makes the exchange a POST to libcurl; the method on the wire is the one
        // given. The body is sent from the request, which lives as long as the exchange.
        if (m_request.body) {
            curl_easy_setopt(m_handle, CURLOPT_POSTFIELDSIZE_LARGE,
                             curl_off_t(m_request.body->size()));
            curl_easy_setopt(m_handle, CURLOPT_POSTFIELDS, m_request.body->constData());
        }
        if (m_request.method != (m_request.body ? "POST" : "GET"))
            curl_easy_setopt(m_handle, CURLOPT_CUSTOMREQUEST, m_request.method.constData());
    }

    static size_t write(char *data, size_t, size_t size, void *transfer)
    {
        return static_cast<Transfer *>(transfer)->received(data, qsizetype(size)) ? size : 0;
    }

    static size_t header(char *data, size_t, size_t size, void *transfer)
    {
        return static_cast<Transfer *>(transfer)->headerLine(
                   QByteArray::fromRawData(data, qsizetype(size)))
                   ? size
                   : 0;
    }

    // libcurl has a connection for the exchange and is about to send the request.
    static int connected(void *transfer, char *, char *, int, int)
    {
        Transfer *self = static_cast<Transfer *>(transfer);
        self->m_connectedAfterMs = self->m_clock.elapsed();
        return CURL_PREREQFUNC_OK;
    }

    // Ends the exchange as libcurl would for `code`, with `why` as the detail.
    bool refuse(CURLcode code, const QByteArray &why)
    {
        m_refusedAs = code;
        m_refusal = why;
        return false;
    }

    // Follows the head line by line: whether a final head has ended, and whether its
    // framing can be trusted.
    bool headerLine(const QByteArray &line)
    {
        if (line.startsWith("HTTP/")) {
            m_headComplete = false;
            m_finalHead = line.mid(line.indexOf(' ') + 1, 1) != "1";
            m_contentLength.clear();
            return true;
        }
        if (line.trimmed().isEmpty()) {
            m_headComplete = m_finalHead;
            return true;
        }
        const qsizetype colon = line.indexOf(':');
        if (colon < 0)
            return true;
        const QByteArray name = line.left(colon).trimmed();
        const QByteArray value = line.mid(colon + 1);
        if (name.compare("transfer-encoding", Qt::CaseInsensitive) == 0)
            return transferCodingLine(value);
        if (name.compare("content-length", Qt::CaseInsensitive) == 0)
            return contentLengthLine(value);
        return true;
    }

    // The request asks for no transfer coding, so an answer in one other than chunked
    // cannot be framed by its Content-Length, nor read: it is refused at its head, the
    // same way whichever libcurl the app runs on.
    bool transferCodingLine(const QByteArray &value)
    {
        for (const QByteArray &coding : value.split(',')) {
            const qsizetype parameters = coding.indexOf(';');
            const QByteArray name = (parameters < 0 ? coding : coding.left(parameters)).trimmed();
            if (!name.isEmpty() && name.compare("chunked", Qt::CaseInsensitive) != 0)
                return refuse(CURLE_BAD_CONTENT_ENCODING,
                              "a transfer coding other than chunked: " + name);
        }
        return true;
    }

    // Content-Length may be repeated, on one line or several, only with one value
    // (RFC 9112, 6.3); two different values leave the body's end unknown.
    bool contentLengthLine(const QByteArray &value)
    {
        for (const QByteArray &part : value.split(',')) {
            const QByteArray length = part.trimmed();
            if (m_contentLength.isEmpty())
                m_contentLength = length;
            else if (length != m_contentLength)
                return refuse(CURLE_WEIRD_SERVER_REPLY, "conflicting Content-Length values: " +
                                                            m_contentLength + " and " + length);
        }
        return true;
    }

    bool received(const char *data, qsizetype size)
    {
        const qsizetype used = m_body.size();
        if (used + size > MaxBodyBytes)
            return refuse(CURLE_FILESIZE_EXCEEDED, QByteArray());
        if (m_body.capacity() - used < size) {
            // A body of known length goes into one block sized for it; any other grows by
            // doubling, never past the limit.
            curl_off_t length = -1;
            if (used == 0)
                curl_easy_getinfo(m_handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
            const qsizetype wanted = length > 0
                                         ? qsizetype(std::min<qint64>(length, kMaxReservedBody))
                                         : 2 * m_body.capacity();
            m_body.reserve(std::min<qsizetype>(std::max(wanted, used + size), MaxBodyBytes));
        }
        m_body.append(data, size);
        if (m_reader)
            m_reader(m_body, false);
        return true;
    }

    const Request m_request;
    const BodyReader m_reader;
    const Delivery m_delivery;
    CURL *m_handle = nullptr;
    QElapsedTimer m_clock;
    QByteArray m_body;
    // Set when the client itself ended the exchange, with what libcurl is then told.
    CURLcode m_refusedAs = CURLE_OK;
    QByteArray m_refusal;
    // The head as read so far: whether the last head was a final (not interim) one, whether
    // it has ended, and the Content-Length it gave.
    bool m_finalHead = false;
    bool m_headComplete = false;
    QByteArray m_contentLength;
    // How long libcurl took to have a connection for the exchange, once it has one, and
    // whether the exchange had to wait in the queue for one.
    std::optional<qint64> m_connectedAfterMs;
    bool m_queued = false;
    char m_detail[CURL_ERROR_SIZE] = {};
};

// The thread that runs every exchange on one libcurl multi handle. libcurl is set up there,
// off the thread that asks, and exchanges are handed to it from any thread and added to
// libcurl in the order they were handed over.
class TPEngineSession::Worker
{
public:
    // A running worker, or none when no thread could be had; `why` then says so.
    static std::unique_ptr<Worker> make(QByteArray &why)
    {
        try {
            return std::unique_ptr<Worker>(new Worker);
        } catch (const std::system_error &error) {
            why = QByteArray("no thread for the engine client: ") + error.what();
            return nullptr;
        }
    }

    // Stops every exchange without delivering and waits for the thread to end.
    ~Worker()
    {
        CURLM *multi = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            m_stopping = true;
            multi = m_multi;
        }
        // Without a multi handle yet, the thread sees the stop before it ever waits.
        if (multi)
            curl_multi_wakeup(multi);
        m_thread.join();
        if (m_multi)
            curl_multi_cleanup(m_multi);
    }
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;

    // Hands the exchange to the thread; gives it back when libcurl could not be set up
    // there, for the caller to fail outside its own lock.
    std::unique_ptr<Transfer> add(std::unique_ptr<Transfer> transfer)
    {
        CURLM *multi = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            if (m_broken)
                return transfer;
            m_handedOver.push_back(std::move(transfer));
            multi = m_multi;
        }
        if (multi)
            curl_multi_wakeup(multi);
        return nullptr;
    }

private:
    Worker()
    {
        m_thread = std::thread([this] { run(); });
    }

    void run()
    {
        TPEngineSession::setUpLibcurl();
        CURLM *multi = curl_multi_init();
        if (multi) {
            curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, MaxConnections);
            curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, MaxConnections);
        }
        std::vector<std::unique_ptr<Transfer>> refused;
        {
            const std::lock_guard lock(m_mutex);
            m_multi = multi;
            m_broken = !multi;
            if (!multi)
                refused.swap(m_handedOver);
        }
        for (std::unique_ptr<Transfer> &transfer : refused)
            transfer->fail(CURLE_FAILED_INIT, "no libcurl multi handle");
        if (!multi)
            return;
        std::unordered_map<CURL *, std::unique_ptr<Transfer>> running;
        while (takeHandedOver(running)) {
            int stillRunning = 0;
            curl_multi_perform(m_multi, &stillRunning);
            int queued = 0;
            while (CURLMsg *message = curl_multi_info_read(m_multi, &queued)) {
                if (message->msg != CURLMSG_DONE)
                    continue;
                const auto ended = running.find(message->easy_handle);
                const CURLcode code = message->data.result;
                curl_multi_remove_handle(m_multi, message->easy_handle);
                std::unique_ptr<Transfer> transfer = std::move(ended->second);
                running.erase(ended);
                transfer->finish(code);
            }
            curl_multi_poll(m_multi, nullptr, 0, kIdleWaitMs, nullptr);
        }
        for (auto &[handle, transfer] : running)
            curl_multi_remove_handle(m_multi, handle);
    }

    // Adds the exchanges handed over since the last turn; false once the worker stops.
    bool takeHandedOver(std::unordered_map<CURL *, std::unique_ptr<Transfer>> &running)
    {
        std::vector<std::unique_ptr<Transfer>> taken;
        {
            const std::lock_guard lock(m_mutex);
            if (m_stopping)
                return false;
            taken.swap(m_handedOver);
        }
        for (std::unique_ptr<Transfer> &transfer : taken) {
            if (!transfer->open()) {
                transfer->fail(CURLE_FAILED_INIT, "no libcurl easy handle");
                continue;
            }
            CURL *handle = transfer->handle();
            if (running.size() >= size_t(MaxConnections))
                transfer->markQueued();
            if (curl_multi_add_handle(m_multi, handle) == CURLM_OK)
                running.emplace(handle, std::move(transfer));
            else
                transfer->fail(CURLE_FAILED_INIT, "libcurl refused the exchange");
        }
        return true;
    }

    std::mutex m_mutex;
    // Set by the thread once libcurl is set up; broken when it gave no multi handle.
    CURLM *m_multi = nullptr;
    bool m_broken = false;
    std::vector<std::unique_ptr<Transfer>> m_handedOver;
    bool m_stopping = false;
    std::thread m_thread;
};

TPEngineSession::TPEngineSession() = default;

void TPEngineSession::setUpLibcurl()
{
    // Plain HTTP to the loopback engine needs none of libcurl's TLS, so none is set up.
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_NOTHING); });
}

TPEngineSession *TPEngineSession::shared()
{
    // Made once, whichever thread asks first, and never destroyed: exchanges may still be
    // finishing while static objects go away. It closes with the application object.
    static TPEngineSession *const session = [] {
        auto *made = new TPEngineSession;
        qAddPostRoutine([] { shared()->close(); });
        return made;
    }();
    return session;
}

bool TPEngineSession::ensureWorker(QByteArray &why)
{
    if (!m_worker)
        m_worker = Worker::make(why);
    return m_worker != nullptr;
}

void TPEngineSession::start(Request request, BodyReader reader, Delivery delivery)
{
    auto transfer =
        std::make_unique<Transfer>(std::move(request), std::move(reader), std::move(delivery));
    std::unique_lock lock(m_mutex);
    if (m_closing)
        return;
    QByteArray why;
    if (ensureWorker(why)) {
        transfer = m_worker->add(std::move(transfer));
        if (!transfer)
            return;
        why = "no libcurl multi handle";
    }
    lock.unlock();
    transfer->fail(CURLE_FAILED_INIT, why.constData());
}

void TPEngineSession::close()
{
    std::unique_ptr<Worker> worker;
    {
        const std::lock_guard lock(m_mutex);
        m_closing = true;
        worker.swap(m_worker);
    }
    // The worker stops and its thread is joined here, outside the lock.
}

#include "editing/tpfindreplace.h"

#include "editing/tpeditbuffer.h"

namespace {

// Typing recounts once it pauses this long.
constexpr int kRecountDelayMs = 150;

} // namespace

TPFindReplace::TPFindReplace(TPEditBuffer *buffer, QObject *parent)
    : QObject(parent), m_buffer(buffer)
{
    m_recountDelay.setSingleShot(true);
    m_recountDelay.setInterval(kRecountDelayMs);
    connect(&m_recountDelay, &QTimer::timeout, this, &TPFindReplace::recount);
    connect(buffer, &TPEditBuffer::edited, this, [this] {
        if (!m_query.isEmpty())
            m_recountDelay.start();
    });
    connect(buffer, &TPEditBuffer::selectionMoved, this, [this] {
        const qsizetype selected = selectedMatch();
        if (selected != m_current) {
            m_current = selected;
            emit matchesChanged();
        }
    });
}

void TPFindReplace::setQuery(const QString &query)
{
    if (m_query == query)
        return;
    m_query = query;
    emit queryChanged();
    recount();
}

void TPFindReplace::setReplacement(const QString &replacement)
{
    if (m_replacement == replacement)
        return;
    m_replacement = replacement;
    emit queryChanged();
}

void TPFindReplace::setRegularExpression(bool on)
{
    if (m_regularExpression == on)
        return;
    m_regularExpression = on;
    emit queryChanged();
    recount();
}

void TPFindReplace::setCaseSensitive(bool on)
{
    if (m_caseSensitive == on)
        return;
    m_caseSensitive = on;
    emit queryChanged();
    recount();
}

void TPFindReplace::recount()
{
    m_recountDelay.stop();
    m_search = TPTextSearch(m_query, m_regularExpression, m_caseSensitive);
    m_matches = m_search.matches(m_buffer->text());
    m_current = selectedMatch();
    emit matchesChanged();
}

qsizetype TPFindReplace::selectedMatch() const
{
    const auto [anchor, cursor] = m_buffer->selection();
    const std::pair<qsizetype, qsizetype> selected{std::min(anchor, cursor),
                                                   std::abs(cursor - anchor)};
    const auto it = std::lower_bound(m_matches.begin(), m_matches.end(), selected);
    return it != m_matches.end() && *it == selected ? it - m_matches.begin() : -1;
}

void TPFindReplace::selectMatch(qsizetype index)
{
    if (index < 0 || index >= m_matches.size())
        return;
    const auto [offset, length] = m_matches.at(index);
    m_buffer->select(offset, offset + length);
    m_current = index;
    emit matchesChanged();
}

void TPFindReplace::findNext()
{
    if (m_recountDelay.isActive())
        recount();
    if (m_matches.isEmpty())
        return;
    const auto [anchor, cursor] = m_buffer->selection();
    const qsizetype after = std::max(anchor, cursor);
    const auto it = std::find_if(m_matches.begin(), m_matches.end(),
                                 [after](const auto &match) { return match.first >= after; });
    selectMatch(it == m_matches.end() ? 0 : it - m_matches.begin());
}

void TPFindReplace::findPrevious()
{
    if (m_recountDelay.isActive())
        recount();
    if (m_matches.isEmpty())
        return;
    const auto [anchor, cursor] = m_buffer->selection();
    const qsizetype before = std::min(anchor, cursor);
    qsizetype index = m_matches.size() - 1;
    for (qsizetype i = m_matches.size() - 1; i >= 0; --i) {
        if (m_matches.at(i).first < before) {
            index = i;
            break;
        }
    }
    selectMatch(index);
}

void TPFindReplace::replaceOne()
{
    if (m_recountDelay.isActive())
        recount();
    const qsizetype index = selectedMatch();
    if (index < 0) {
        findNext();
        return;
    }
    const auto [offset, length] = m_matches.at(index);
    const QString inserted =
        m_search.replacementFor(m_buffer->text(), {offset, length}, m_replacement);
    m_buffer->applyStep({{offset, m_buffer->text().mid(offset, length), inserted}});
    recount();
    findNext();
}

void TPFindReplace::replaceAll()
{
    if (m_recountDelay.isActive())
        recount();
    if (m_matches.isEmpty())
        return;
    QList<TPTextEdit> edits;
    // From the last match back, so that each offset is still right when its turn comes.
    for (auto it = m_matches.crbegin(); it != m_matches.crend(); ++it) {
        const auto [offset, length] = *it;
        edits.append({offset, m_buffer->text().mid(offset, length),
                      m_search.replacementFor(m_buffer->text(), *it, m_replacement)});
    }
    m_buffer->applyStep(edits);
    recount();
    emit replacedAll(int(edits.size()));
}

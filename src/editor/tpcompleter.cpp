#include "editor/tpcompleter.h"

#include "editing/tpeditbuffer.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

TPCompleter::TPCompleter(TPEditBuffer *buffer, QObject *parent) : QObject(parent), m_buffer(buffer)
{
    // A cursor moved away from the typed letters leaves nothing to complete.
    connect(m_buffer, &TPEditBuffer::selectionMoved, this, [this] {
        const auto [anchor, cursor] = m_buffer->selection();
        if (isActive() && (anchor != cursor || cursor != m_context.start + m_context.prefix.size()))
            dismiss();
    });
}

void TPCompleter::refresh()
{
    const auto [anchor, cursor] = m_buffer->selection();
    if (anchor != cursor) {
        dismiss();
        return;
    }
    const QString &text = m_buffer->text();
    ++m_generation;
    m_context = TPLuaCompletion::contextAt(text, cursor);
    if (!m_context.active) {
        show({});
        readAheadAt(text, cursor);
        return;
    }
    if (!m_fileNames || !TPLuaCompletion::holds(*m_fileNames, text, m_context.start, cursor))
        m_fileNames = TPLuaCompletion::readFileNames(text, m_context.start, cursor);
    show(TPLuaCompletion::candidates(m_context, *m_fileNames, m_tree, Limit));
}

void TPCompleter::readAheadAt(const QString &text, qsizetype cursor)
{
    // The next letter typed here starts a word: its file's names are read now, on a worker,
    // so that the key finds them ready. A key that comes first reads them itself.
    const quint64 generation = m_generation;
    QPointer<TPCompleter> self(this);
    QThreadPool::globalInstance()->start([self, generation, text, cursor] {
        std::shared_ptr<const TPLuaCompletion::FileNames> names =
            TPLuaCompletion::readFileNames(text, cursor, cursor);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation, names = std::move(names)] {
                if (self && self->m_generation == generation)
                    self->m_fileNames = names;
            },
            Qt::QueuedConnection);
    });
}

void TPCompleter::show(const QList<TPCompletionCandidate> &candidates)
{
    m_candidates = candidates;
    QList<TPTitledRowsModel::Row> rows;
    for (const TPCompletionCandidate &candidate : candidates)
        rows.append({candidate.name, candidate.hint});
    m_rows.updateRows(rows);
    m_current = 0;
    emit changed();
}

bool TPCompleter::pressKey(int key, Qt::KeyboardModifiers modifiers)
{
    if (!isActive() || modifiers != Qt::NoModifier)
        return false;
    switch (key) {
    case Qt::Key_Up:
        move(-1);
        return true;
    case Qt::Key_Down:
        move(1);
        return true;
    case Qt::Key_Tab:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        accept(m_current);
        return true;
    case Qt::Key_Escape:
        dismiss();
        return true;
    default:
        return false;
    }
}

void TPCompleter::move(int by)
{
    if (!isActive())
        return;
    const int count = int(m_candidates.size());
    m_current = ((m_current + by) % count + count) % count;
    emit changed();
}

void TPCompleter::accept(int row)
{
    if (row < 0 || row >= m_candidates.size())
        return;
    const TPCompletionCandidate chosen = m_candidates.at(row);
    const TPLuaCompletion::Insertion insertion =
        TPLuaCompletion::insertion(m_buffer->text(), m_context, chosen, m_buffer->indentUnit(),
                                   m_buffer->script().dominantLineEnding());
    dismiss();
    // A step of its own: the typing before it is one undo, the candidate another.
    m_buffer->closeRun();
    m_buffer->applyStep({insertion.edit}, insertion.cursor);
    m_buffer->closeRun();
}

void TPCompleter::dismiss()
{
    if (!isActive())
        return;
    show({});
}

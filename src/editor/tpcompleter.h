#pragma once

#include "editing/tpluacompletion.h"
#include "platform/tptitledrowsmodel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <memory>

class TPEditBuffer;

// Completion in the editor: while a name is typed it offers candidates (the row above a
// phone's keyboard shows the first five, a desktop's list at the cursor shows them all),
// one of which can be chosen with Up and Down and taken with Tab or Return, or by a tap;
// Escape closes them. Taking one replaces the typed letters, as one undo step.
class TPCompleter : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the code editor")
    // The candidates: each its name, and a function's parameters as the detail.
    Q_PROPERTY(TPTitledRowsModel *rows READ rows CONSTANT)
    Q_PROPERTY(bool active READ isActive NOTIFY changed)
    // The candidate Tab or Return takes.
    Q_PROPERTY(int current READ current NOTIFY changed)

public:
    static constexpr int Limit = 8;
    // How many the row above a phone's keyboard shows.
    static constexpr int RowLimit = 5;

    explicit TPCompleter(TPEditBuffer *buffer, QObject *parent = nullptr);

    TPTitledRowsModel *rows() { return &m_rows; }
    bool isActive() const { return !m_candidates.isEmpty(); }
    int current() const { return m_current; }
    const QList<TPCompletionCandidate> &candidates() const { return m_candidates; }
    void setTreeNames(const TPLuaCompletion::TreeNames &names) { m_tree = names; }

    // Offers the candidates for what is typed at the cursor now.
    void refresh();
    // A key of the text while candidates are offered: Up, Down, Tab, Return and Escape are
    // taken; false for any other key, or when nothing is offered.
    bool pressKey(int key, Qt::KeyboardModifiers modifiers);

public slots:
    void accept(int row);
    void dismiss();
    void move(int by);

signals:
    void changed();

private:
    void show(const QList<TPCompletionCandidate> &candidates);
    void readAheadAt(const QString &text, qsizetype cursor);

    TPEditBuffer *m_buffer;
    TPLuaCompletion::TreeNames m_tree;
    QList<TPCompletionCandidate> m_candidates;
    // Where the typed letters were when the candidates were made.
    TPCompletionContext m_context;
    TPTitledRowsModel m_rows;
    int m_current = 0;
    // The file's names for the word being typed, kept while only that word changes.
    std::shared_ptr<const TPLuaCompletion::FileNames> m_fileNames;
    // Counts the refreshes: names read ahead count only if none came since.
    quint64 m_generation = 0;
};

#pragma once

#include "editing/tptextsearch.h"

#include <QObject>
#include <QTimer>

class TPEditBuffer;

// Find and replace over a buffer's exact text: plain text or a regular expression, with
// or without case, forwards and backwards with wrap-around, one or all at once.
class TPFindReplace : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(QString replacement READ replacement WRITE setReplacement NOTIFY queryChanged)
    Q_PROPERTY(bool regularExpression READ regularExpression WRITE setRegularExpression NOTIFY
                   queryChanged)
    Q_PROPERTY(bool caseSensitive READ caseSensitive WRITE setCaseSensitive NOTIFY queryChanged)
    Q_PROPERTY(int matchCount READ matchCount NOTIFY matchesChanged)
    // The 1-based number of the selected match, 0 when the selection is none.
    Q_PROPERTY(int currentMatch READ currentMatch NOTIFY matchesChanged)
    Q_PROPERTY(bool validQuery READ validQuery NOTIFY matchesChanged)

public:
    explicit TPFindReplace(TPEditBuffer *buffer, QObject *parent = nullptr);

    QString query() const { return m_query; }
    void setQuery(const QString &query);
    QString replacement() const { return m_replacement; }
    void setReplacement(const QString &replacement);
    bool regularExpression() const { return m_regularExpression; }
    void setRegularExpression(bool on);
    bool caseSensitive() const { return m_caseSensitive; }
    void setCaseSensitive(bool on);

    int matchCount() const { return int(m_matches.size()); }
    int currentMatch() const { return m_current + 1; }
    bool validQuery() const { return m_search.isValid(); }

    // Every match as (offset, length), in order; recounted after each change of the text.
    const QList<std::pair<qsizetype, qsizetype>> &matches() const { return m_matches; }

public slots:
    void findNext();
    void findPrevious();
    // Replaces the selected match and selects the next one; with no match selected, finds
    // the next one first.
    void replaceOne();
    // Replaces every match, as one step that one undo takes back, and says how many.
    void replaceAll();

signals:
    void queryChanged();
    void matchesChanged();
    void replacedAll(int count);

private:
    void recount();
    void selectMatch(qsizetype index);
    // The index of the match the selection covers exactly, or -1.
    qsizetype selectedMatch() const;

    TPEditBuffer *m_buffer;
    QString m_query;
    QString m_replacement;
    bool m_regularExpression = false;
    bool m_caseSensitive = false;
    TPTextSearch m_search;
    QList<std::pair<qsizetype, qsizetype>> m_matches;
    qsizetype m_current = -1;
    // Typing recounts once it pauses.
    QTimer m_recountDelay;
};

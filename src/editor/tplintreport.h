#pragma once

#include "editing/tpluacheck.h"
#include "platform/tptitledrowsmodel.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// luacheck's warnings about the script as the editor shows them: a mark in the gutter on each
// line with one, the first one's message under the text, their number, and the list of all,
// each message in the current language ("`tpa` is not known; did you mean `tap`?"). When the
// script was not linted (too long, too slow) the message says so instead.
class TPLintReport : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the code editor")
    Q_PROPERTY(int count READ count NOTIFY changed)
    // What the bar under the text says: the first warning with its line, or why there is
    // none; empty when there is nothing to say.
    Q_PROPERTY(QString message READ message NOTIFY changed)
    // "⚠ 3", and the same as a screen reader says it.
    Q_PROPERTY(QString countText READ countText NOTIFY changed)
    Q_PROPERTY(QString countName READ countName NOTIFY changed)
    Q_PROPERTY(QList<int> lines READ lines NOTIFY changed)
    // Every warning: its message, and its line as the detail.
    Q_PROPERTY(TPTitledRowsModel *rows READ rows CONSTANT)
    Q_PROPERTY(bool listOpen READ listOpen WRITE setListOpen NOTIFY listOpenChanged)

public:
    explicit TPLintReport(QObject *parent = nullptr);

    void setResult(const TPLintResult &result);
    const TPLintResult &result() const { return m_result; }
    int count() const { return int(m_result.warnings.size()); }
    QString message() const { return m_message; }
    QString countText() const;
    QString countName() const;
    // The 1-based lines with a warning, each once, in order.
    QList<int> lines() const { return m_lines; }
    TPTitledRowsModel *rows() { return &m_rows; }
    bool listOpen() const { return m_listOpen; }
    void setListOpen(bool open);
    // The line of the warning at `row` of the list (0 when there is none), and of the
    // warning the message shows.
    int lineOfRow(int row) const;
    int messageLine() const { return lineOfRow(0); }

    // A warning's message in the current language.
    static QString describe(const TPLintWarning &warning);

signals:
    void changed();
    void listOpenChanged();

private:
    void show();

    TPLintResult m_result;
    QString m_message;
    QList<int> m_lines;
    TPTitledRowsModel m_rows;
    bool m_listOpen = false;
};

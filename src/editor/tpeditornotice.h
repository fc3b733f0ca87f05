#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <utility>

// The bar above the editor's text that tells of something the user should know before
// saving (the file was not read, it is not text, a draft of it was kept) and offers what
// can be done about it. The screen decides what it says; the view shows it and reports
// which action was tapped.
class TPEditorNotice : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the editor screen")
    Q_PROPERTY(QString text READ text NOTIFY changed)
    // Each a map of "id" (what trigger reports) and "title".
    Q_PROPERTY(QVariantList actions READ actions NOTIFY changed)
    Q_PROPERTY(bool shown READ shown NOTIFY changed)

public:
    using Action = std::pair<QString, QString>; // id, title
    using QObject::QObject;

    QString text() const { return m_text; }
    QVariantList actions() const;
    bool shown() const { return !m_text.isEmpty(); }
    QList<Action> actionList() const { return m_actions; }

    void show(const QString &text, const QList<Action> &actions);
    void clear();

public slots:
    void trigger(const QString &id);

signals:
    void changed();
    void triggered(const QString &id);

private:
    QString m_text;
    QList<Action> m_actions;
};

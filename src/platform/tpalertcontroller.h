#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QQmlListProperty>
#include <QQuickItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <functional>

// One button of an alert or action sheet.
class TPAlertAction : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Actions are built by controllers")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(Style style READ style CONSTANT)
    Q_PROPERTY(bool enabled READ isEnabled WRITE setEnabled NOTIFY enabledChanged)
    // Whether the alert offers the action as it is shown now; the presenter decides.
    Q_PROPERTY(bool offered READ isOffered NOTIFY offeredChanged)

public:
    enum class Style { Default, Cancel, Destructive };
    Q_ENUM(Style)

    TPAlertAction(const QString &title, Style style, std::function<void()> handler,
                  QObject *parent = nullptr);

    QString title() const { return m_title; }
    Style style() const { return m_style; }
    bool isEnabled() const { return m_enabled; }
    void setEnabled(bool enabled);
    bool isOffered() const { return m_offered; }
    void setOffered(bool offered);
    // Runs the handler, if any.
    void trigger() const;

signals:
    void enabledChanged();
    void offeredChanged();

private:
    QString m_title;
    Style m_style;
    bool m_enabled = true;
    bool m_offered = true;
    std::function<void()> m_handler;
};

// An alert or action sheet as a controller builds it: title, message, at most one text
// field, and its actions in order. A view shows it; a test reads it, types into its field
// and triggers its actions the same way the view does.
class TPAlertController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Alerts are built by controllers")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString message READ message CONSTANT)
    Q_PROPERTY(Style preferredStyle READ preferredStyle CONSTANT)
    Q_PROPERTY(bool hasTextField READ hasTextField CONSTANT)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(QString placeholder READ placeholder CONSTANT)
    // What of the field's first text is selected as it appears: [start, end) in UTF-16
    // units; an empty range puts the cursor there.
    Q_PROPERTY(int selectionStart READ selectionStart CONSTANT)
    Q_PROPERTY(int selectionEnd READ selectionEnd CONSTANT)
    Q_PROPERTY(bool autocorrection READ autocorrection CONSTANT)
    Q_PROPERTY(bool autocapitalization READ autocapitalization CONSTANT)
    // The keyboard hints of the text field, from the two above (a number, as
    // TPInputTraits gives them).
    Q_PROPERTY(int inputMethodHints READ inputMethodHints CONSTANT)
    Q_PROPERTY(QQmlListProperty<TPAlertAction> actions READ actionList CONSTANT)
    // The control a sheet points at: a view hands its own item. Gone with the item.
    Q_PROPERTY(QQuickItem *anchor READ anchor NOTIFY anchorChanged)
    // What a screen reader announces for the alert or sheet: its title, else its message,
    // else its actions' titles (a sheet may have neither title nor message).
    Q_PROPERTY(QString accessibleName READ accessibleName CONSTANT)

public:
    enum class Style { Alert, ActionSheet };
    Q_ENUM(Style)

    TPAlertController(const QString &title, const QString &message, Style style,
                      QObject *parent = nullptr);

    // The one text field, with its hints. Autocorrection and capitalisation follow the
    // platform's defaults (on) unless switched off.
    struct TextField
    {
        QString text;
        QString placeholder;
        bool autocorrection = true;
        bool autocapitalization = true;
        // The selection as the field appears; by default the cursor after the text.
        int selectionStart = -1;
        int selectionEnd = -1;
    };
    void addTextField(const TextField &field);
    // Called on every edit of the field's text, with the new text.
    void setTextChangedHandler(std::function<void(const QString &)> handler);

    TPAlertAction *addAction(const QString &title, TPAlertAction::Style style,
                             std::function<void()> handler = {});
    void setAnchor(QQuickItem *anchor);
    // The action Return triggers when the alert has more than one; as the platform's
    // preferred action, it must be one of the alert's own.
    void setPreferredAction(TPAlertAction *action);

    QString title() const { return m_title; }
    QString message() const { return m_message; }
    Style preferredStyle() const { return m_style; }
    bool hasTextField() const { return m_hasTextField; }
    QString text() const { return m_field.text; }
    void setText(const QString &text);
    QString placeholder() const { return m_field.placeholder; }
    int selectionStart() const;
    int selectionEnd() const;
    bool autocorrection() const { return m_field.autocorrection; }
    bool autocapitalization() const { return m_field.autocapitalization; }
    int inputMethodHints() const;
    QList<TPAlertAction *> actions() const { return m_actions; }
    // The same actions as a list the views can read.
    QQmlListProperty<TPAlertAction> actionList();
    QQuickItem *anchor() const { return m_anchor; }
    QString accessibleName() const;

    // The action's handler runs after the alert has been dismissed, as on the platform.
    // A disabled action does nothing.
    Q_INVOKABLE void triggerAction(int index);
    // A tap outside a sheet dismisses it as its cancel action would.
    Q_INVOKABLE void dismissByCancel();
    // Return, in the text field or anywhere while the alert is up: the preferred action when
    // one is set, else the only action, else the last one of the default style (Create,
    // Save, OK); it runs when enabled. A sheet has no default and ignores Return.
    Q_INVOKABLE void submit();
    // Escape: the cancel action, or the only action of an alert that has one (its OK).
    Q_INVOKABLE void cancelByKey();
    // A key pressed while the alert is up (a Qt::Key): Return and Enter submit, Escape
    // cancels, any other does nothing.
    Q_INVOKABLE void pressKey(int key);

signals:
    void textChanged();
    void anchorChanged();
    // The alert is gone; its presenter lets go of it.
    void dismissed();

private:
    QString m_title;
    QString m_message;
    Style m_style;
    bool m_hasTextField = false;
    TextField m_field;
    std::function<void(const QString &)> m_textChangedHandler;
    int defaultActionIndex() const;

    QList<TPAlertAction *> m_actions;
    TPAlertAction *m_preferred = nullptr;
    QPointer<QQuickItem> m_anchor;
};

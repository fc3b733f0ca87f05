#pragma once

#include "tpcodeeditor.h"
#include "tpviewcontroller.h"

#include <QFont>
#include <QMarginsF>
#include <QMetaObject>
#include <QRectF>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

// One script file: read once when the screen is built, edited as plain text, saved back
// whole, and run only after a successful save. The text itself, and every editing tool,
// live in the code editor `_textView`, which the view's text item only shows.
class TPEditorVC : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the scripts list")
    Q_PROPERTY(TPCodeEditor *code READ code CONSTANT)
    Q_PROPERTY(QString saveTitle READ saveTitle NOTIFY barTitlesChanged)
    Q_PROPERTY(QString runTitle READ runTitle NOTIFY barTitlesChanged)
    // The editor's own tools' texts by key, re-read with the bar titles.
    Q_PROPERTY(QVariantMap toolTexts READ toolTexts NOTIFY barTitlesChanged)
    // The symbol row's keys: each a map of "key" (what it sends) and "label" (what it shows).
    Q_PROPERTY(QVariantList symbolKeys READ symbolKeys NOTIFY barTitlesChanged)
    Q_PROPERTY(QFont font READ font CONSTANT)
    Q_PROPERTY(qreal bottomInset READ bottomInset NOTIFY contentInsetsChanged)
    Q_PROPERTY(bool loading READ loading NOTIFY loadingChanged)
    Q_PROPERTY(bool wrap READ wrap WRITE setWrap NOTIFY wrapChanged)
    // The software keyboard is up, so the row of symbol keys shows above it.
    Q_PROPERTY(bool keyboardShown READ keyboardShown NOTIFY keyboardShownChanged)

public:
    explicit TPEditorVC(const QString &relPath, QObject *parent = nullptr);

    QUrl viewUrl() const override;
    void viewWillAppear() override;
    void viewWillDisappear() override;

    QString relPath() const { return _relPath; }
    TPCodeEditor *code() const { return _textView; }
    // The exact text: what Save sends.
    QString text() const { return _textView->text(); }
    // Replaces the whole text, as a read does.
    void setText(const QString &text);
    QString saveTitle() const { return _saveTitle; }
    QString runTitle() const { return _runTitle; }
    QVariantMap toolTexts() const { return m_toolTexts; }
    QVariantList symbolKeys() const;
    bool loading() const { return m_loading; }
    bool wrap() const;
    void setWrap(bool wrap);
    bool keyboardShown() const { return m_keyboardShown; }
    QFont font() const { return _font; }
    QMarginsF contentInsets() const { return _contentInsets; }
    // The scroll indicators always follow the content insets.
    QMarginsF scrollIndicatorInsets() const { return _contentInsets; }
    qreal bottomInset() const { return _contentInsets.bottom(); }
    void setContentInsets(const QMarginsF &insets);

    void loadContent();
    // Sends the current text; reports true once the engine has it. Called back exactly once.
    void saveWithCompletion(std::function<void(bool)> completion);

    // "Menlo" at 14 points where installed, otherwise the platform's fixed-width font.
    static QFont editorFont();
    // The app's own stored key for the wrap toggle; never part of the engine's settings.
    static constexpr auto WrapKey = "tp_editor_wrap";

public slots:
    void onLangChangedNotification();
    void onSaveTapped();
    void onRunTapped();
    // The keyboard's final frame in the screen view's coordinates (undefined when the
    // notification carries none) and the height of the screen's view.
    void keyboardWillChangeFrame(const QVariant &endFrame, qreal viewHeight);
    void keyboardWillHide();
    // The platform's keyboard moved, appeared or went: its frame, read from the platform's
    // input method and mapped into `view`, or its hiding, is passed on to the two above.
    void followKeyboard(QQuickItem *view);

signals:
    void barTitlesChanged();
    void contentInsetsChanged();
    void loadingChanged();
    void wrapChanged();
    void keyboardShownChanged();

protected:
    void viewDidLoad() override;

private:
    void setLoading(bool loading);
    void setKeyboardShown(bool shown);
    void retitle();
    void readToolTexts();

    QString _relPath;
    TPCodeEditor *_textView;
    QString _saveTitle;
    QString _runTitle;
    QFont _font;
    QMarginsF _contentInsets;
    QVariantMap m_toolTexts;
    bool m_loading = false;
    bool m_keyboardShown = false;
    // The text's revision when the engine last confirmed a save (or the read).
    quint64 m_savedRevision = 0;
    QMetaObject::Connection _langObservation;
    // Keyboard and language notifications are heeded only while the screen is visible.
    bool _observing = false;
};

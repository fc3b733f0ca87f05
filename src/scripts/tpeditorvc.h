#pragma once

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
// whole, and run only after a successful save.
class TPEditorVC : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the scripts list")
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(QString saveTitle READ saveTitle NOTIFY barTitlesChanged)
    Q_PROPERTY(QString runTitle READ runTitle NOTIFY barTitlesChanged)
    Q_PROPERTY(QFont font READ font CONSTANT)
    Q_PROPERTY(qreal bottomInset READ bottomInset NOTIFY contentInsetsChanged)

public:
    explicit TPEditorVC(const QString &relPath, QObject *parent = nullptr);

    QUrl viewUrl() const override;
    void viewWillAppear() override;
    void viewWillDisappear() override;

    QString relPath() const { return _relPath; }
    QString text() const { return _text; }
    void setText(const QString &text);
    QString saveTitle() const { return _saveTitle; }
    QString runTitle() const { return _runTitle; }
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

public slots:
    void onLangChangedNotification();
    void onSaveTapped();
    void onRunTapped();
    // The keyboard's final frame in the screen view's coordinates (undefined when the
    // notification carries none) and the height of the screen's view.
    void keyboardWillChangeFrame(const QVariant &endFrame, qreal viewHeight);
    void keyboardWillHide();

signals:
    void textChanged();
    void barTitlesChanged();
    void contentInsetsChanged();

protected:
    void viewDidLoad() override;

private:
    QString _relPath;
    QString _text;
    QString _saveTitle;
    QString _runTitle;
    QFont _font;
    QMarginsF _contentInsets;
    QMetaObject::Connection _langObservation;
    // Keyboard and language notifications are heeded only while the screen is visible.
    bool _observing = false;
};

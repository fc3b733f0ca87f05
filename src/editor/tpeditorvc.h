#pragma once

#include "editor/tpdraftkeeper.h"
#include "editor/tpdraftstore.h"
#include "editor/tpeditornotice.h"
#include "editor/tpopeneditors.h"
#include "editor/tptextsize.h"
#include "editor/tpversiontarget.h"
#include "engine/tpengineapi.h"
#include "platform/tpkeyboardinsets.h"
#include "platform/tploadingviewcontroller.h"

#include <QFont>
#include <QFontMetricsF>
#include <QMarginsF>
#include <QMetaObject>
#include <QRectF>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

// The code editor stays out of this header, so that a screen pushing the editor needs only
// the editor room.
class TPCodeEditor;
Q_MOC_INCLUDE("editor/tpcodeeditor.h")

// One script file: read once when the screen is built, edited as plain text, saved back
// whole, and run only after a successful save. The text itself, and every editing tool,
// live in the code editor `_textView`, which the view's text item only shows.
class TPEditorVC : public TPLoadingViewController, public TPOpenEditor, public TPVersionTarget
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the scripts list")
    Q_PROPERTY(TPCodeEditor *code READ code CONSTANT)
    // What the user should know before saving: the file was not read, is not text, or a
    // draft of it was kept.
    Q_PROPERTY(TPEditorNotice *notice READ notice CONSTANT)
    Q_PROPERTY(QString saveTitle READ saveTitle NOTIFY barTitlesChanged)
    Q_PROPERTY(QString runTitle READ runTitle NOTIFY barTitlesChanged)
    // The editor's own tools' texts by key, re-read with the bar titles.
    Q_PROPERTY(QVariantMap toolTexts READ toolTexts NOTIFY barTitlesChanged)
    // The symbol row's keys: each a map of "key" (what it sends) and "label" (what it shows).
    Q_PROPERTY(QVariantList symbolKeys READ symbolKeys NOTIFY barTitlesChanged)
    // What the row above the keyboard shows: the first completion candidates while a name is
    // typed on a phone's keyboard, the symbol keys otherwise; in the same form.
    Q_PROPERTY(QVariantList keyRowKeys READ keyRowKeys NOTIFY keyRowKeysChanged)
    // The completion candidates show as a list at the cursor: where no on-screen keyboard is.
    Q_PROPERTY(bool completionListShown READ completionListShown NOTIFY keyRowKeysChanged)
    // The text's font, at the size the user chose.
    Q_PROPERTY(QFont font READ font NOTIFY fontChanged)
    Q_PROPERTY(TPTextSize *textSize READ textSize CONSTANT)
    // A tab character shows as wide as one indent step.
    Q_PROPERTY(qreal tabStopDistance READ tabStopDistance NOTIFY tabStopDistanceChanged)
    Q_PROPERTY(qreal bottomInset READ bottomInset NOTIFY contentInsetsChanged)
    Q_PROPERTY(bool wrap READ wrap WRITE setWrap NOTIFY wrapChanged)
    // The software keyboard is up, so the row of symbol keys shows above it.
    Q_PROPERTY(bool keyboardShown READ keyboardShown NOTIFY keyboardShownChanged)
    // The symbol-key row shows above an on-screen keyboard, or whenever the user asks for it
    // (a desktop or a hardware keyboard has no on-screen one).
    Q_PROPERTY(bool symbolRowRequested READ symbolRowRequested WRITE setSymbolRowRequested NOTIFY
                   symbolRowShownChanged)
    Q_PROPERTY(bool symbolRowShown READ symbolRowShown NOTIFY symbolRowShownChanged)
    // The file is one of the user's favourites, which quick open lists first.
    Q_PROPERTY(bool favourite READ isFavourite NOTIFY favouriteChanged)

public:
    // Where the file's read stands. Until a read has succeeded with text, Save and Run ask
    // before they replace the file on the engine.
    enum class ReadState { Reading, Read, Failed, NotText };

    explicit TPEditorVC(const QString &relPath, QObject *parent = nullptr);
    // Leaving (Back, or the app closing) keeps unsaved text as a draft.
    ~TPEditorVC() override;

    QUrl viewUrl() const override;
    void viewWillAppear() override;
    void viewWillDisappear() override;

    QString relPath() const { return _relPath; }
    TPCodeEditor *code() const { return _textView; }
    TPEditorNotice *notice() const { return m_notice; }
    TPDraftKeeper *drafts() const { return m_drafts; }
    ReadState readState() const { return m_readState; }
    // The exact text: what Save sends.
    QString text() const override;
    // Replaces the whole text, as a read does.
    void setText(const QString &text);
    QString saveTitle() const { return _saveTitle; }
    QString runTitle() const { return _runTitle; }
    QVariantMap toolTexts() const { return m_toolTexts; }
    QVariantList symbolKeys() const;
    QVariantList keyRowKeys() const;
    bool completionListShown() const;
    bool wrap() const;
    void setWrap(bool wrap);
    bool keyboardShown() const { return m_keyboard->keyboardShown(); }
    bool symbolRowRequested() const { return m_symbolRowRequested; }
    void setSymbolRowRequested(bool requested);
    bool symbolRowShown() const { return keyboardShown() || m_symbolRowRequested; }
    bool isFavourite() const;
    QFont font() const;
    TPTextSize *textSize() const { return m_textSize; }
    qreal tabStopDistance() const;
    QMarginsF contentInsets() const { return m_keyboard->insets(); }
    // The scroll indicators always follow the content insets.
    QMarginsF scrollIndicatorInsets() const { return m_keyboard->insets(); }
    qreal bottomInset() const { return m_keyboard->insets().bottom(); }
    void setContentInsets(const QMarginsF &insets) { m_keyboard->setInsets(insets); }

    TPViewController *targetScreen() override { return this; }
    void loadContent() override;
    // Puts `text` in the editor as one undoable edit, unsaved: a version from the history.
    void restoreText(const QString &text) override;
    // The same, once the file has been read (an editor opened to restore a version).
    void restoreWhenRead(const QString &text);
    // Selects `length` characters from `offset` once the text is read (a search's match).
    void selectWhenRead(qsizetype offset, qsizetype length);

    QString openPath() const override { return _relPath; }
    bool hasUnsavedEdits() const override { return unsavedChanges(); }
    void takeSavedText(const QString &text) override;
    // How the history opens an editor to restore a version of a file no editor is open on.
    static TPEditorOpener opener();
    // Sends the current text; reports true once the engine has it. Called back exactly once.
    void saveWithCompletion(std::function<void(bool)> completion);

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
    // Shows the file's versions in the history.
    void onHistoryTapped();
    // The star: the file becomes a favourite, or stops being one.
    void toggleFavourite();
    // An action of the notice: "retry", "restore" or "discard".
    void onNoticeAction(const QString &id);
    // A key of the row above the keyboard: a candidate is taken, a symbol key typed.
    void pressKeyRowKey(const QString &key);

signals:
    void barTitlesChanged();
    void contentInsetsChanged();
    void wrapChanged();
    void keyboardShownChanged();
    void symbolRowShownChanged();
    void favouriteChanged();
    void tabStopDistanceChanged();
    void fontChanged();
    void keyRowKeysChanged();

protected:
    void viewDidLoad() override;

private:
    void onTextEdited();
    // The other scripts were read or one was saved: completion and the lint learn their
    // globals, and the lint looks again.
    void learnTreeGlobals();
    void onSaved(const QString &sent);
    void onReadFinished(const std::optional<QByteArray> &bytes, const TPEngineAPI::Error &error);
    // Says in the notice what the read left and which draft is on offer.
    void showNotice();
    void restoreDraft();
    void discardDraft();
    // Runs `proceed` at once once the file was read, and otherwise only after the user
    // agreed to replace the file on the engine with the text shown.
    void whenReplacingIsAgreed(std::function<void()> proceed);
    // Run, once replacing is agreed: save first, and run only what the engine has.
    void saveThenRun();
    void retitle();
    void readToolTexts();

    QString _relPath;
    TPCodeEditor *_textView;
    QString _saveTitle;
    QString _runTitle;
    QFont _font;
    TPTextSize *const m_textSize;
    // The text's insets, kept clear of the on-screen keyboard.
    TPKeyboardInsets *const m_keyboard;
    QVariantMap m_toolTexts;
    bool m_symbolRowRequested = false;
    // The text the engine last confirmed (a save, or the read); shared, not copied.
    QString m_savedText;
    TPEditorNotice *m_notice;
    TPDraftKeeper *m_drafts;
    ReadState m_readState = ReadState::Reading;
    bool m_replaceAgreed = false;
    // A draft kept from before this screen (Back, a kill, a crash) that differs from what
    // the engine has, until the user restores or discards it.
    std::optional<TPDraftStore::Draft> m_draftOnOffer;
    // A version to put in once the read has succeeded.
    std::optional<QString> m_restoreWhenRead;
    std::optional<std::pair<qsizetype, qsizetype>> m_selectWhenRead;
    // A read is replacing the text: that is no edit of the user's.
    bool m_settingText = false;
    QMetaObject::Connection _langObservation;
    // Keyboard and language notifications are heeded only while the screen is visible.
    bool _observing = false;
};

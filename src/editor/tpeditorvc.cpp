#include "editor/tpeditorvc.h"

#include "editor/tpcodeeditor.h"
#include "editor/tpeditorfont.h"
#include "editor/tpopenedfiles.h"

#include "editor/tphistoryvc.h"
#include "editor/tpscripthistory.h"
#include "editor/tpscripttreeindex.h"
#include "engine/tpengineapi.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "foundation/tppathrules.h"
#include "foundation/tpwhilealive.h"
#include "platform/tpnavigationstack.h"

#include <QFontDatabase>
#include <QPointer>
#include <QQuickItem>
#include <QSettings>

TPEditorVC::TPEditorVC(const QString &relPath, QObject *parent)
    : TPLoadingViewController(parent), _relPath(relPath),
      _textView(new TPCodeEditor(TPLastPathSegment(relPath), this)), _font(TPEditorFont::base()),
      m_textSize(new TPTextSize(this)), m_keyboard(new TPKeyboardInsets(this)),
      m_notice(new TPEditorNotice(this)), m_drafts(new TPDraftKeeper(
                                              relPath, [this] { return text(); }, this))
{
    setTitle(TPLastPathSegment(_relPath));
    // The view may be built before viewDidLoad; its tools need their texts from the start.
    readToolTexts();
    connect(_textView, &TPCodeEditor::edited, this, &TPEditorVC::onTextEdited);
    connect(m_notice, &TPEditorNotice::triggered, this, &TPEditorVC::onNoticeAction);
    connect(_textView, &TPCodeEditor::indentChanged, this, &TPEditorVC::tabStopDistanceChanged);
    connect(m_textSize, &TPTextSize::changed, this, &TPEditorVC::fontChanged);
    connect(_textView->completer(), &TPCompleter::changed, this, &TPEditorVC::keyRowKeysChanged);
    connect(m_keyboard, &TPKeyboardInsets::keyboardShownChanged, this,
            &TPEditorVC::keyRowKeysChanged);
    connect(this, &TPEditorVC::barTitlesChanged, this, &TPEditorVC::keyRowKeysChanged);
    connect(m_textSize, &TPTextSize::changed, this, &TPEditorVC::tabStopDistanceChanged);
    connect(m_keyboard, &TPKeyboardInsets::insetsChanged, this, &TPEditorVC::contentInsetsChanged);
    connect(m_keyboard, &TPKeyboardInsets::keyboardShownChanged, this,
            &TPEditorVC::keyboardShownChanged);
    connect(m_keyboard, &TPKeyboardInsets::keyboardShownChanged, this,
            &TPEditorVC::symbolRowShownChanged);
    // Wrapped lines hang below their indent, measured in the text's font.
    const auto layLines = [this] {
        _textView->setLineLayout(wrap(), QFontMetricsF(font()).horizontalAdvance(u' '));
    };
    connect(this, &TPEditorVC::wrapChanged, this, layLines);
    connect(m_textSize, &TPTextSize::changed, this, layLines);
    layLines();
    TPOpenEditors::add(this);
}

QString TPEditorVC::text() const
{
    return _textView->text();
}

QFont TPEditorVC::font() const
{
    QFont sized = _font;
    sized.setPointSizeF(m_textSize->points());
    return sized;
}

qreal TPEditorVC::tabStopDistance() const
{
    return QFontMetricsF(font()).horizontalAdvance(QLatin1Char(' ')) *
           _textView->buffer()->indentColumns();
}

TPEditorVC::~TPEditorVC()
{
    TPOpenEditors::remove(this);
    m_drafts->flush();
}

void TPEditorVC::onTextEdited()
{
    if (m_settingText)
        return;
    // Undoing back to the saved text leaves nothing unsaved.
    const bool unsaved = text() != m_savedText;
    setUnsavedChanges(unsaved);
    m_drafts->changed(unsaved);
}

QUrl TPEditorVC::viewUrl() const
{
    return QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Editor/EditorPage.qml"));
}

void TPEditorVC::viewDidLoad()
{
    // The lint knows the globals the other scripts define and use, once they are read.
    TPScriptTreeIndex *index = TPScriptTreeIndex::shared();
    connect(index, &TPScriptTreeIndex::changed, this, &TPEditorVC::learnTreeGlobals);
    if (index->loaded())
        learnTreeGlobals();
    index->ensureLoaded();
    retitle();
    TPOpenedFiles::recordOpened(_relPath);
    loadContent();
}

bool TPEditorVC::isFavourite() const
{
    return TPOpenedFiles::isFavourite(_relPath);
}

void TPEditorVC::toggleFavourite()
{
    TPOpenedFiles::setFavourite(_relPath, !isFavourite());
    emit favouriteChanged();
}

QVariantList TPEditorVC::symbolKeys() const
{
    QVariantList keys;
    for (const QString &key : _textView->symbolKeys()) {
        // The word keys are named in the current language; a symbol shows itself.
        const QString label = key.size() == 1 ? key : TPL(QStringLiteral("key_") + key.toLower());
        keys.append(QVariantMap{{QStringLiteral("key"), key}, {QStringLiteral("label"), label}});
    }
    return keys;
}

namespace {

// A candidate's key in the row above the keyboard.
const QString kCandidateKey = QStringLiteral("complete:");

} // namespace

QVariantList TPEditorVC::keyRowKeys() const
{
    const TPCompleter *completer = _textView->completer();
    if (!keyboardShown() || !completer->isActive())
        return symbolKeys();
    QVariantList keys;
    const QList<TPCompletionCandidate> &candidates = completer->candidates();
    for (int i = 0; i < std::min<int>(int(candidates.size()), TPCompleter::RowLimit); ++i)
        keys.append(QVariantMap{{QStringLiteral("key"), kCandidateKey + QString::number(i)},
                                {QStringLiteral("label"), candidates.at(i).name}});
    return keys;
}

bool TPEditorVC::completionListShown() const
{
    return !keyboardShown() && _textView->completer()->isActive();
}

void TPEditorVC::pressKeyRowKey(const QString &key)
{
    if (key.startsWith(kCandidateKey))
        _textView->completer()->accept(key.mid(kCandidateKey.size()).toInt());
    else
        _textView->pressSymbolKey(key);
}

void TPEditorVC::retitle()
{
    _saveTitle = TPL("btn_save");
    _runTitle = TPL("btn_run");
    readToolTexts();
    emit barTitlesChanged();
}

void TPEditorVC::readToolTexts()
{
    // The texts the editor's page and its find bar show, by their keys in the extra table.
    static const char *const keys[] = {
        "editor_undo",    "editor_redo",          "editor_symbols",      "editor_find",
        "editor_wrap",    "editor_loading",       "editor_line_numbers", "editor_syntax_error",
        "history_title",  "find_placeholder",     "replace_placeholder", "find_regex",
        "find_case",      "find_case_glyph",      "find_next",           "find_previous",
        "find_replace",   "find_replace_all",     "goto_placeholder",    "goto_go",
        "editor_outline", "editor_outline_empty", "editor_favourite",    "editor_warnings"};
    m_toolTexts.clear();
    for (const char *key : keys)
        m_toolTexts.insert(QLatin1String(key), TPL(key));
}

void TPEditorVC::viewWillAppear()
{
    // Listens only while visible: a language change made elsewhere leaves the bar titles
    // in the language they were last set in.
    _observing = true;
    disconnect(_langObservation);
    _langObservation =
        connect(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged, this,
                &TPEditorVC::onLangChangedNotification);
}

void TPEditorVC::viewWillDisappear()
{
    _observing = false;
    disconnect(_langObservation);
}

void TPEditorVC::onLangChangedNotification()
{
    retitle();
}

void TPEditorVC::setText(const QString &newText)
{
    m_settingText = true;
    _textView->setText(newText);
    m_settingText = false;
    m_savedText = newText;
    setUnsavedChanges(false);
}

bool TPEditorVC::wrap() const
{
    // Lines wrap by default, as in a phone's text view.
    return QSettings().value(QLatin1String(WrapKey), true).toBool();
}

void TPEditorVC::setWrap(bool wrap)
{
    if (wrap == this->wrap())
        return;
    QSettings().setValue(QLatin1String(WrapKey), wrap);
    emit wrapChanged();
}

void TPEditorVC::loadContent()
{
    setLoading(true);
    TPEngineAPI::readScriptData(
        _relPath, TPWhileAlive(this, [](TPEditorVC *self, const std::optional<QByteArray> &bytes,
                                        const TPEngineAPI::Error &error) {
            self->setLoading(false);
            self->onReadFinished(bytes, error);
        }));
}

void TPEditorVC::onReadFinished(const std::optional<QByteArray> &bytes,
                                const TPEngineAPI::Error &error)
{
    // What was typed before a retry is on disk before the read replaces it, and then on
    // offer like any other draft.
    m_drafts->flush();
    m_draftOnOffer = TPDraftStore::read(_relPath);
    if (error) {
        // Whatever the failure, the user is told the engine is offline.
        m_readState = ReadState::Failed;
        showOfflineAlert();
        showNotice();
        return;
    }
    // Every version read is kept, exactly as it came, text or not.
    TPScriptHistory::shared()->record(_relPath, *bytes);
    const std::optional<QString> content = TPEngineAPI::scriptText(*bytes);
    m_readState = content ? ReadState::Read : ReadState::NotText;
    setText(content.value_or(QString()));
    if (content && m_draftOnOffer && m_draftOnOffer->bytes == content->toUtf8()) {
        // The engine already has what the draft kept.
        m_drafts->discard();
        m_draftOnOffer.reset();
    }
    if (content && m_restoreWhenRead) {
        restoreText(*m_restoreWhenRead);
        m_restoreWhenRead.reset();
    }
    if (content && m_selectWhenRead) {
        const auto [offset, length] = *m_selectWhenRead;
        _textView->buffer()->revealSelection(offset, offset + length);
        m_selectWhenRead.reset();
    }
    showNotice();
}

void TPEditorVC::showNotice()
{
    QStringList lines;
    QList<TPEditorNotice::Action> actions;
    if (m_readState == ReadState::Failed) {
        lines.append(TPL("read_failed"));
        actions.append({QStringLiteral("retry"), TPL("read_retry")});
    } else if (m_readState == ReadState::NotText) {
        lines.append(TPL("read_not_text"));
    }
    if (m_draftOnOffer) {
        lines.append(TPL("draft_found").arg(TPLDateTime(m_draftOnOffer->savedAt)));
        actions.append({QStringLiteral("restore"), TPL("draft_restore")});
        actions.append({QStringLiteral("discard"), TPL("draft_discard")});
    }
    if (lines.isEmpty())
        m_notice->clear();
    else
        m_notice->show(lines.join(u'\n'), actions);
}

void TPEditorVC::onNoticeAction(const QString &id)
{
    if (id == QLatin1String("retry"))
        loadContent();
    else if (id == QLatin1String("restore"))
        restoreDraft();
    else if (id == QLatin1String("discard"))
        discardDraft();
}

void TPEditorVC::restoreDraft()
{
    if (!m_draftOnOffer)
        return;
    const QString draft = QString::fromUtf8(m_draftOnOffer->bytes);
    m_draftOnOffer.reset();
    restoreText(draft);
    showNotice();
}

void TPEditorVC::restoreText(const QString &restored)
{
    // One undoable edit, so that the text before it is one undo away. It is not saved
    // until the user saves.
    _textView->buffer()->applyStep({{0, _textView->text(), restored}}, 0);
}

void TPEditorVC::restoreWhenRead(const QString &restored)
{
    if (m_readState == ReadState::Read)
        restoreText(restored);
    else
        m_restoreWhenRead = restored;
}

void TPEditorVC::selectWhenRead(qsizetype offset, qsizetype length)
{
    if (m_readState == ReadState::Read)
        _textView->buffer()->revealSelection(offset, offset + length);
    else
        m_selectWhenRead = {offset, length};
}

void TPEditorVC::takeSavedText(const QString &savedText)
{
    // Typing that is not saved stays as it is, now unsaved against the new text. An editor
    // with nothing unsaved shows the new text, with what it showed one undo away.
    const bool typing = unsavedChanges();
    m_savedText = savedText;
    if (!typing && text() != savedText)
        restoreText(savedText);
    setUnsavedChanges(text() != m_savedText);
    // What the engine has is now known, whatever the read before gave.
    if (m_readState != ReadState::Read) {
        m_readState = ReadState::Read;
        showNotice();
    }
}

void TPEditorVC::onHistoryTapped()
{
    if (TPNavigationStack *stack = navigationController())
        stack->pushViewController(new TPHistoryVC(_relPath, this, opener()));
}

TPEditorOpener TPEditorVC::opener()
{
    return [](const QString &path, const QString &text) {
        auto *editor = new TPEditorVC(path);
        editor->restoreWhenRead(text);
        return editor;
    };
}

void TPEditorVC::discardDraft()
{
    m_drafts->discard();
    m_draftOnOffer.reset();
    showNotice();
}

void TPEditorVC::whenReplacingIsAgreed(std::function<void()> proceed)
{
    if (m_readState == ReadState::Read || m_replaceAgreed) {
        proceed();
        return;
    }
    confirm(TPL("replace_unread"), TPL("guard_replace"), [this, proceed = std::move(proceed)] {
        m_replaceAgreed = true;
        proceed();
    });
}

void TPEditorVC::saveWithCompletion(std::function<void(bool)> completion)
{
    QPointer<TPEditorVC> self(this);
    const QString sent = text();
    TPEngineAPI::saveScript(_relPath, sent,
                            [self, completion, sent](const TPEngineAPI::Error &error) {
                                if (!self) {
                                    completion(false);
                                    return;
                                }
                                if (error) {
                                    self->showAlert(TPL("alert_error"), TPL("err_save_fail"));
                                    completion(false);
                                    return;
                                }
                                self->onSaved(sent);
                                completion(true);
                            });
}

void TPEditorVC::learnTreeGlobals()
{
    const TPScriptTreeIndex *index = TPScriptTreeIndex::shared();
    _textView->completer()->setTreeNames({index->definedGlobals(), index->engineGlobals()});
    _textView->setKnownGlobals(index->knownGlobalsFor(_relPath));
    _textView->checkSyntaxNow();
}

void TPEditorVC::onSaved(const QString &sent)
{
    TPScriptTreeIndex::shared()->fileSaved(_relPath, sent);
    // What was sent is saved, and kept as a version; typing since then is not, and stays a
    // draft.
    TPScriptHistory::shared()->record(_relPath, TPEngineAPI::scriptData(sent));
    m_savedText = sent;
    const bool unsaved = text() != m_savedText;
    setUnsavedChanges(unsaved);
    if (unsaved) {
        m_drafts->changed(true);
        return;
    }
    m_drafts->saved();
    m_draftOnOffer.reset();
    showNotice();
}

void TPEditorVC::onSaveTapped()
{
    whenReplacingIsAgreed([this] {
        saveWithCompletion(TPWhileAlive(this, [](TPEditorVC *self, bool saved) {
            if (saved)
                self->showAlert(TPL("alert_ok"), TPL("alert_saved"));
        }));
    });
}

void TPEditorVC::onRunTapped()
{
    whenReplacingIsAgreed([this] { saveThenRun(); });
}

void TPEditorVC::saveThenRun()
{
    saveWithCompletion(TPWhileAlive(this, [](TPEditorVC *self, bool saved) {
        // Never run unsaved text; the save already reported its failure.
        if (!saved)
            return;
        TPEngineAPI::runFile(
            self->_relPath,
            TPWhileAlive(self, [](TPEditorVC *editor, const TPEngineAPI::Error &error) {
                if (error)
                    editor->showAlert(TPL("alert_error"), TPL("err_run_fail"));
                else
                    editor->showAlert(TPL("alert_ok"), TPL("alert_ran"));
            }));
    }));
}

void TPEditorVC::keyboardWillChangeFrame(const QVariant &endFrame, qreal viewHeight)
{
    if (_observing)
        m_keyboard->keyboardWillChangeFrame(endFrame, viewHeight);
}

void TPEditorVC::followKeyboard(QQuickItem *view)
{
    if (_observing)
        m_keyboard->followKeyboard(view);
}

void TPEditorVC::keyboardWillHide()
{
    if (_observing)
        m_keyboard->keyboardWillHide();
}

void TPEditorVC::setSymbolRowRequested(bool requested)
{
    if (m_symbolRowRequested == requested)
        return;
    m_symbolRowRequested = requested;
    emit symbolRowShownChanged();
}

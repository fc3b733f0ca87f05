#include "tpeditorvc.h"

#include "tpengineapi.h"
#include "tplang.h"
#include "tpnotificationcenter.h"
#include "tppathrules.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QInputMethod>
#include <QPointer>
#include <QQuickItem>
#include <QSettings>

TPEditorVC::TPEditorVC(const QString &relPath, QObject *parent)
    : TPViewController(parent), _relPath(relPath),
      _textView(new TPCodeEditor(TPLastPathSegment(relPath), this)), _font(editorFont())
{
    setTitle(TPLastPathSegment(_relPath));
    // The view may be built before viewDidLoad; its tools need their texts from the start.
    readToolTexts();
    connect(_textView, &TPCodeEditor::edited, this,
            [this] { setUnsavedChanges(_textView->revision() != m_savedRevision); });
}

QUrl TPEditorVC::viewUrl() const
{
    return QUrl(QStringLiteral("qrc:/TPCompanion/EditorPage.qml"));
}

QFont TPEditorVC::editorFont()
{
    QFont font = QFontDatabase::families().contains(QStringLiteral("Menlo"))
                     ? QFont(QStringLiteral("Menlo"))
                     : QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(14);
    // Code needs no cosmetic shaping (ligatures, kerning); skipping it makes laying out a
    // long file about a quarter faster. Scripts that need shaping still get it.
    font.setStyleStrategy(QFont::PreferNoShaping);
    return font;
}

void TPEditorVC::viewDidLoad()
{
    retitle();
    loadContent();
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

void TPEditorVC::retitle()
{
    _saveTitle = TPL("btn_save");
    _runTitle = TPL("btn_run");
    readToolTexts();
    emit barTitlesChanged();
}

void TPEditorVC::readToolTexts()
{
    m_toolTexts.clear();
    for (const QString &key : TPLangExtraTable().keys())
        m_toolTexts.insert(key, TPL(key));
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
    _textView->setText(newText);
    m_savedRevision = _textView->revision();
    setUnsavedChanges(false);
}

void TPEditorVC::setLoading(bool loading)
{
    if (m_loading == loading)
        return;
    m_loading = loading;
    emit loadingChanged();
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

void TPEditorVC::setContentInsets(const QMarginsF &insets)
{
    if (_contentInsets == insets)
        return;
    _contentInsets = insets;
    emit contentInsetsChanged();
}

void TPEditorVC::loadContent()
{
    QPointer<TPEditorVC> self(this);
    setLoading(true);
    TPEngineAPI::readScript(
        _relPath, [self](const std::optional<QString> &content, const TPEngineAPI::Error &error) {
            if (!self)
                return;
            self->setLoading(false);
            if (error) {
                // Whatever the failure, the user is told the engine is offline.
                self->showAlert(TPL("alert_error"), TPL("err_offline"));
                return;
            }
            self->setText(content.value_or(QString()));
        });
}

void TPEditorVC::saveWithCompletion(std::function<void(bool)> completion)
{
    QPointer<TPEditorVC> self(this);
    const quint64 revision = _textView->revision();
    TPEngineAPI::saveScript(_relPath, text(),
                            [self, completion, revision](const TPEngineAPI::Error &error) {
                                if (!self) {
                                    completion(false);
                                    return;
                                }
                                if (error) {
                                    self->showAlert(TPL("alert_error"), TPL("err_save_fail"));
                                    completion(false);
                                    return;
                                }
                                // What was sent is saved; typing since then is not.
                                self->m_savedRevision = revision;
                                self->setUnsavedChanges(self->_textView->revision() != revision);
                                completion(true);
                            });
}

void TPEditorVC::onSaveTapped()
{
    QPointer<TPEditorVC> self(this);
    saveWithCompletion([self](bool saved) {
        if (saved && self)
            self->showAlert(TPL("alert_ok"), TPL("alert_saved"));
    });
}

void TPEditorVC::onRunTapped()
{
    QPointer<TPEditorVC> self(this);
    saveWithCompletion([self](bool saved) {
        // Never run unsaved text; the save already reported its failure.
        if (!saved || !self)
            return;
        TPEngineAPI::runFile(self->_relPath, [self](const TPEngineAPI::Error &error) {
            if (!self)
                return;
            if (error)
                self->showAlert(TPL("alert_error"), TPL("err_run_fail"));
            else
                self->showAlert(TPL("alert_ok"), TPL("alert_ran"));
        });
    });
}

void TPEditorVC::keyboardWillChangeFrame(const QVariant &endFrame, qreal viewHeight)
{
    if (!_observing || !endFrame.isValid() || endFrame.isNull() || !endFrame.canConvert<QRectF>())
        return;
    const QRectF frame = endFrame.toRectF();
    const qreal overlap = std::max<qreal>(0, viewHeight - frame.top());
    QMarginsF insets = _contentInsets;
    insets.setBottom(overlap);
    setContentInsets(insets);
    setKeyboardShown(overlap > 0);
}

void TPEditorVC::followKeyboard(QQuickItem *view)
{
    const QInputMethod *keyboard = QGuiApplication::inputMethod();
    if (!view || !keyboard->isVisible()) {
        keyboardWillHide();
        return;
    }
    const QRectF frame = keyboard->keyboardRectangle();
    keyboardWillChangeFrame(QRectF(view->mapFromScene(frame.topLeft()), frame.size()),
                            view->height());
}

void TPEditorVC::keyboardWillHide()
{
    if (!_observing)
        return;
    QMarginsF insets = _contentInsets;
    insets.setBottom(0);
    setContentInsets(insets);
    setKeyboardShown(false);
}

void TPEditorVC::setKeyboardShown(bool shown)
{
    if (m_keyboardShown == shown)
        return;
    m_keyboardShown = shown;
    emit keyboardShownChanged();
}

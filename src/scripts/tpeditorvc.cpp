#include "tpeditorvc.h"

#include "tpengineapi.h"
#include "tplang.h"
#include "tpnotificationcenter.h"
#include "tppathrules.h"

#include <QFontDatabase>
#include <QPointer>

TPEditorVC::TPEditorVC(const QString &relPath, QObject *parent)
    : TPViewController(parent), _relPath(relPath), _font(editorFont())
{
    setTitle(TPLastPathSegment(_relPath));
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
    return font;
}

void TPEditorVC::viewDidLoad()
{
    _saveTitle = TPL("btn_save");
    _runTitle = TPL("btn_run");
    emit barTitlesChanged();
    loadContent();
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
    _saveTitle = TPL("btn_save");
    _runTitle = TPL("btn_run");
    emit barTitlesChanged();
}

void TPEditorVC::setText(const QString &newText)
{
    if (_text == newText)
        return;
    _text = newText;
    emit textChanged();
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
    TPEngineAPI::readScript(
        _relPath, [self](const std::optional<QString> &content, const TPEngineAPI::Error &error) {
            if (!self)
                return;
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
    TPEngineAPI::saveScript(_relPath, _text, [self, completion](const TPEngineAPI::Error &error) {
        if (!self) {
            completion(false);
            return;
        }
        if (error) {
            self->showAlert(TPL("alert_error"), TPL("err_save_fail"));
            completion(false);
            return;
        }
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
}

void TPEditorVC::keyboardWillHide()
{
    if (!_observing)
        return;
    QMarginsF insets = _contentInsets;
    insets.setBottom(0);
    setContentInsets(insets);
}

#include "settings/tpsettingsvc.h"

#include "foundation/tpdeviceaddress.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "foundation/tpownerfile.h"
#include "platform/tpalertcontroller.h"
#include "settings/tpsettingsstore.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QPointer>
#include <QUrl>

namespace {

constexpr int kConnectionSection = 0;
constexpr int kLanguageSection = 1;
constexpr int kOptionsSection = 2;
constexpr int kRowHeight = 44;
constexpr int kSwatchRowHeight = 56;
constexpr int kSliderRowHeight = 72;

} // namespace

TPSettingsVC::TPSettingsVC(QObject *parent)
    : TPViewController(parent), _rowsModel(new TPSettingsRowsModel(this)),
      _swatchCell(new TPSwatchCell(this)), _sizeCell(new TPSliderCell(this)),
      _opacityCell(new TPSliderCell(this)), m_markerPreview(new TPMarkerPreview(this))
{
    m_markerPreview->follow(_sizeCell, _opacityCell);
}

QUrl TPSettingsVC::viewUrl() const
{
    return QUrl(
        QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Settings/SettingsPage.qml"));
}

void TPSettingsVC::viewDidLoad()
{
    setTitle(TPL("tab_settings"));
    _switchTitleKeys = TPSettingsStore::switchTitleKeys();
    _switchKeys = TPSettingsStore::switchKeys();
    connect(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged, this,
            &TPSettingsVC::onLangChangedNotification);
    reloadData();
}

void TPSettingsVC::viewWillAppear()
{
    reloadSection(kConnectionSection);
}

QString TPSettingsVC::titleForHeaderInSection(int section) const
{
    if (section == kConnectionSection)
        return TPL("section_connection");
    if (section == kLanguageSection)
        return TPL("section_language");
    return TPL("section_options");
}

int TPSettingsVC::numberOfRowsInSection(int section) const
{
    if (section == kConnectionSection)
        return 3;
    if (section == kLanguageSection)
        return 1;
    const int switches = int(_switchKeys.size());
    return TPSettingsStore::isDebugTouchOn() ? switches + 4 : switches + 1;
}

int TPSettingsVC::heightForRow(int section, int row) const
{
    const int switches = int(_switchKeys.size());
    if (section == kOptionsSection && TPSettingsStore::isDebugTouchOn()) {
        if (row == switches)
            return kSwatchRowHeight;
        if (row == switches + 1 || row == switches + 2)
            return kSliderRowHeight;
    }
    return kRowHeight;
}

TPSettingsRow TPSettingsVC::baseRow(int section, int row, const char *identifier,
                                    TPSettingsRowKind::Kind kind) const
{
    TPSettingsRow result;
    result.identifier = QString::fromLatin1(identifier);
    result.kind = kind;
    result.section = section;
    result.row = row;
    result.sectionTitle = titleForHeaderInSection(section);
    result.height = heightForRow(section, row);
    return result;
}

TPSettingsRow TPSettingsVC::cellForRow(int section, int row)
{
    if (section == kConnectionSection)
        return connectionCellForRow(row);
    if (section == kLanguageSection)
        return languageCellForRow(row);
    return optionsCellForRow(row);
}

TPSettingsRow TPSettingsVC::connectionCellForRow(int row)
{
    if (row == 0) {
        TPSettingsRow cell = baseRow(kConnectionSection, row, "ipCell", TPSettingsRowKind::Value);
        cell.title = TPL("row_device_ip");
        cell.detail = TPDeviceIPPortString();
        return cell;
    }
    if (row == 1) {
        TPSettingsRow cell =
            baseRow(kConnectionSection, row, "ownerCell", TPSettingsRowKind::Value);
        cell.title = TPL("row_owner_name");
        const QString owner = TPReadOwnerFile();
        cell.detail = owner.isEmpty() ? TPL("na") : owner;
        cell.disclosure = true;
        return cell;
    }
    TPSettingsRow cell = baseRow(kConnectionSection, row, "ideCell", TPSettingsRowKind::Value);
    cell.title = TPL("row_open_ide");
    cell.disclosure = true;
    return cell;
}

TPSettingsRow TPSettingsVC::languageCellForRow(int row)
{
    TPSettingsRow cell = baseRow(kLanguageSection, row, "langCell", TPSettingsRowKind::Segments);
    cell.highlightsOnTap = false;
    cell.title = TPL("row_language");
    cell.segments = {TPL("lang_vi"), TPL("lang_en")};
    cell.selectedSegment = TPCurrentLang() == QLatin1String("en") ? 1 : 0;
    return cell;
}

TPSettingsRow TPSettingsVC::optionsCellForRow(int row)
{
    const int switches = int(_switchKeys.size());
    const bool debugTouch = TPSettingsStore::isDebugTouchOn();
    QPointer<TPSettingsVC> self(this);

    if (row < switches) {
        TPSettingsRow cell = baseRow(kOptionsSection, row, "switchCell", TPSettingsRowKind::Switch);
        cell.highlightsOnTap = false;
        cell.title = TPL(_switchTitleKeys.at(row));
        cell.switchOn = TPSettingsStore::boolForKey(_switchKeys.at(row));
        cell.tag = row;
        return cell;
    }
    if (debugTouch && row == switches) {
        TPSettingsRow cell = baseRow(kOptionsSection, row, "swatchCell", TPSettingsRowKind::Swatch);
        cell.highlightsOnTap = false;
        _swatchCell->selectRGB(TPSettingsStore::currentTouchColorRGB());
        m_markerPreview->setColorRGB(TPSettingsStore::currentTouchColorRGB());
        _swatchCell->setOnPick([self](quint32 rgb) {
            // The value is kept even when the screen is gone; only the push needs it.
            TPSettingsStore::storeTouchColorRGB(rgb);
            if (self) {
                self->m_markerPreview->setColorRGB(rgb);
                TPSettingsStore::postAllSettings();
            }
        });
        cell.cell = _swatchCell;
        return cell;
    }
    if (debugTouch && (row == switches + 1 || row == switches + 2)) {
        const bool size = row == switches + 1;
        TPSettingsRow cell = baseRow(kOptionsSection, row, size ? "sizeCell" : "opacityCell",
                                     TPSettingsRowKind::Slider);
        cell.highlightsOnTap = false;
        TPSliderCell *slider = size ? _sizeCell : _opacityCell;
        const TPEngineOption &option = TPSettingsStore::optionOfKind(
            size ? TPOptionKind::TouchSize : TPOptionKind::TouchOpacity);
        slider->configureWithTitle(
            TPL(option.titleKey), float(option.minimum), float(option.maximum),
            size ? TPSettingsStore::currentTouchSize() : TPSettingsStore::currentTouchOpacity(),
            QString::fromUtf8(option.unit));
        slider->setOnChanged([self, size](qint64 value) {
            if (size)
                TPSettingsStore::storeTouchSize(value);
            else
                TPSettingsStore::storeTouchOpacity(value);
            if (self)
                TPSettingsStore::postAllSettings();
        });
        cell.cell = slider;
        cell.previewBelow = !size;
        return cell;
    }
    TPSettingsRow cell = baseRow(kOptionsSection, row, "segCell", TPSettingsRowKind::Segments);
    cell.highlightsOnTap = false;
    cell.title = TPL(TPSettingsStore::optionOfKind(TPOptionKind::ToastPosition).titleKey);
    cell.segments = {TPL("pos_top"), TPL("pos_center"), TPL("pos_bottom")};
    cell.selectedSegment = int(TPSettingsStore::currentToastPosition());
    return cell;
}

QList<TPSettingsRow> TPSettingsVC::rowsOfSection(int section)
{
    QList<TPSettingsRow> rows;
    const int count = numberOfRowsInSection(section);
    for (int row = 0; row < count; ++row)
        rows.append(cellForRow(section, row));
    return rows;
}

void TPSettingsVC::reloadData()
{
    QList<TPSettingsRow> rows;
    for (int section = 0; section < numberOfSections(); ++section)
        rows += rowsOfSection(section);
    _rowsModel->setRows(rows);
}

void TPSettingsVC::reloadSection(int section)
{
    _rowsModel->replaceSection(section, rowsOfSection(section));
}

void TPSettingsVC::didSelectRow(int section, int row)
{
    if (section != kConnectionSection)
        return;
    if (row == 0)
        onDeviceIPRowTapped();
    else if (row == 1)
        promptRenameOwner();
    else
        onOpenWebIDETapped();
}

void TPSettingsVC::onDeviceIPRowTapped()
{
    // Whatever the row shows is copied, "N/A" included.
    QGuiApplication::clipboard()->setText(TPDeviceIPPortString());
    showAlert(TPL("alert_ok"), TPL("copied"));
}

void TPSettingsVC::onOpenWebIDETapped()
{
    const auto address = TPDeviceIPv4();
    if (!address) {
        showAlert(TPL("alert_error"), TPL("na"));
        return;
    }
    const QUrl url(TPWebIDEURLText(*address), QUrl::StrictMode);
    if (!url.isValid())
        return;
    QDesktopServices::openUrl(url);
}

void TPSettingsVC::promptRenameOwner()
{
    auto *alert = new TPAlertController(TPL("rename_owner_title"), QString(),
                                        TPAlertController::Style::Alert);
    alert->addTextField({TPReadOwnerFile(), TPL("owner_prompt_ph"), false, true});
    alert->addAction(TPL("cancel"), TPAlertAction::Style::Cancel);
    QPointer<TPSettingsVC> self(this);
    QPointer<TPAlertController> field(alert);
    alert->addAction(TPL("btn_save"), TPAlertAction::Style::Default, [self, field] {
        // The row re-reads the file, so it shows whatever the write left there.
        if (self && field && TPSubmitOwnerName(field->text()))
            self->reloadSection(kConnectionSection);
    });
    presentAlert(alert);
}

void TPSettingsVC::onSwitchChanged(int tag, bool on)
{
    if (tag < 0 || tag >= _switchKeys.size())
        return;
    const QString key = _switchKeys.at(tag);
    TPSettingsStore::storeSwitch(key, on);
    TPSettingsStore::postAllSettings();
    if (key == QLatin1String(TPDebugTouchKey))
        reloadSection(kOptionsSection);
}

void TPSettingsVC::onSegmentChanged(int section, int selectedSegment)
{
    if (section == kLanguageSection)
        onLangSegmentChanged(selectedSegment);
    else if (section == kOptionsSection)
        onToastPosChanged(selectedSegment);
}

void TPSettingsVC::onToastPosChanged(int selectedSegment)
{
    TPSettingsStore::storeToastPosition(selectedSegment);
    TPSettingsStore::postAllSettings();
}

void TPSettingsVC::onLangSegmentChanged(int selectedSegment)
{
    TPSettingsStore::storeLanguageSegment(selectedSegment);
    TPNotificationCenter::defaultCenter()->postLangChanged();
}

void TPSettingsVC::onLangChangedNotification()
{
    setTitle(TPL("tab_settings"));
    reloadData();
}

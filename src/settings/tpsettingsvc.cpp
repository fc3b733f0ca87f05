#include "tpsettingsvc.h"

#include "tpalertcontroller.h"
#include "tpdeviceaddress.h"
#include "tplang.h"
#include "tpnotificationcenter.h"
#include "tpownerfile.h"
#include "tpsettingsstore.h"

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
      _opacityCell(new TPSliderCell(this))
{}

QUrl TPSettingsVC::viewUrl() const
{
    return QUrl(QStringLiteral("qrc:/TPCompanion/SettingsPage.qml"));
}

void TPSettingsVC::viewDidLoad()
{
    setTitle(TPL("tab_settings"));
    _switchTitleKeys = {QStringLiteral("set_alert_error"), QStringLiteral("set_vibrate_error"),
                        QStringLiteral("set_toast_startstop"),
                        QStringLiteral("set_vibrate_startstop"), QStringLiteral("set_debug_touch")};
    _switchKeys = TPSettingsStore::switchKeys();
    connect(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged, this,
            &TPSettingsVC::onLangChangedNotification);
    reloadData();
}

bool TPSettingsVC::isDebugTouchOn() const
{
    return TPSettingsStore::isDebugTouchOn();
}

quint32 TPSettingsVC::currentTouchColorRGB() const
{
    return TPSettingsStore::currentTouchColorRGB();
}

qint64 TPSettingsVC::currentTouchSize() const
{
    return TPSettingsStore::currentTouchSize();
}

qint64 TPSettingsVC::currentTouchOpacity() const
{
    return TPSettingsStore::currentTouchOpacity();
}

void TPSettingsVC::postAllSettings() const
{
    TPSettingsStore::postAllSettings();
}

QString TPSettingsVC::deviceIPPortString() const
{
    return TPDeviceIPPortString();
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
    return isDebugTouchOn() ? switches + 4 : switches + 1;
}

int TPSettingsVC::heightForRow(int section, int row) const
{
    const int switches = int(_switchKeys.size());
    if (section == kOptionsSection && isDebugTouchOn()) {
        if (row == switches)
            return kSwatchRowHeight;
        if (row == switches + 1 || row == switches + 2)
            return kSliderRowHeight;
    }
    return kRowHeight;
}

TPSettingsRow TPSettingsVC::baseRow(int section, int row, const char *identifier) const
{
    TPSettingsRow result;
    result.identifier = QString::fromLatin1(identifier);
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
        TPSettingsRow cell = baseRow(kConnectionSection, row, "ipCell");
        cell.title = TPL("row_device_ip");
        cell.detail = deviceIPPortString();
        return cell;
    }
    if (row == 1) {
        TPSettingsRow cell = baseRow(kConnectionSection, row, "ownerCell");
        cell.title = TPL("row_owner_name");
        const QString owner = TPReadOwnerFile();
        cell.detail = owner.isEmpty() ? TPL("na") : owner;
        cell.disclosure = true;
        return cell;
    }
    TPSettingsRow cell = baseRow(kConnectionSection, row, "ideCell");
    cell.title = TPL("row_open_ide");
    cell.disclosure = true;
    return cell;
}

TPSettingsRow TPSettingsVC::languageCellForRow(int row)
{
    TPSettingsRow cell = baseRow(kLanguageSection, row, "langCell");
    cell.highlightsOnTap = false;
    cell.title = TPL("row_language");
    cell.segments = {TPL("lang_vi"), TPL("lang_en")};
    cell.selectedSegment = TPCurrentLang() == QLatin1String("en") ? 1 : 0;
    return cell;
}

TPSettingsRow TPSettingsVC::optionsCellForRow(int row)
{
    const int switches = int(_switchKeys.size());
    const bool debugTouch = isDebugTouchOn();
    QPointer<TPSettingsVC> self(this);

    if (row < switches) {
        TPSettingsRow cell = baseRow(kOptionsSection, row, "switchCell");
        cell.highlightsOnTap = false;
        cell.title = TPL(_switchTitleKeys.at(row));
        cell.switchOn = TPSettingsStore::boolForKey(_switchKeys.at(row));
        cell.tag = row;
        return cell;
    }
    if (debugTouch && row == switches) {
        TPSettingsRow cell = baseRow(kOptionsSection, row, "swatchCell");
        cell.highlightsOnTap = false;
        _swatchCell->selectRGB(currentTouchColorRGB());
        _swatchCell->setOnPick([self](quint32 rgb) {
            // The value is kept even when the screen is gone; only the push needs it.
            TPSettingsStore::storeTouchColorRGB(rgb);
            if (self)
                self->postAllSettings();
        });
        cell.cell = _swatchCell;
        return cell;
    }
    if (debugTouch && (row == switches + 1 || row == switches + 2)) {
        const bool size = row == switches + 1;
        TPSettingsRow cell = baseRow(kOptionsSection, row, size ? "sizeCell" : "opacityCell");
        cell.highlightsOnTap = false;
        TPSliderCell *slider = size ? _sizeCell : _opacityCell;
        if (size)
            slider->configureWithTitle(TPL("set_touch_size"), 8, 120, currentTouchSize(),
                                       QString());
        else
            slider->configureWithTitle(TPL("set_touch_opacity"), 5, 100, currentTouchOpacity(),
                                       QStringLiteral("%"));
        slider->setOnChanged([self, size](qint64 value) {
            if (size)
                TPSettingsStore::storeTouchSize(value);
            else
                TPSettingsStore::storeTouchOpacity(value);
            if (self)
                self->postAllSettings();
        });
        cell.cell = slider;
        return cell;
    }
    TPSettingsRow cell = baseRow(kOptionsSection, row, "segCell");
    cell.highlightsOnTap = false;
    cell.title = TPL("set_toast_pos");
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
    QGuiApplication::clipboard()->setText(deviceIPPortString());
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
    postAllSettings();
    if (key == QLatin1String("tp_debug_touch"))
        reloadSection(kOptionsSection);
}

void TPSettingsVC::onToastPosChanged(int selectedSegment)
{
    TPSettingsStore::storeToastPosition(selectedSegment);
    postAllSettings();
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

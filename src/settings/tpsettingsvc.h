#pragma once

#include "platform/tpviewcontroller.h"
#include "settings/tpmarkerpreview.h"
#include "settings/tpsettingsrowsmodel.h"
#include "settings/tpslidercell.h"
#include "settings/tpswatchcell.h"

#include <QStringList>
#include <QtQml/qqmlregistration.h>

// The Settings tab: Connection (device address, device name, Web IDE), Language, and the
// engine's options. Every option change is stored and then the whole settings document is
// pushed to the engine; the touch-marker rows show only while touch debugging is on.
class TPSettingsVC : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the app delegate")
    Q_PROPERTY(TPSettingsRowsModel *rows READ rowsModel CONSTANT)
    // The touch marker as the settings make it, under the touch-marker rows.
    Q_PROPERTY(TPMarkerPreview *markerPreview READ markerPreview CONSTANT)

public:
    explicit TPSettingsVC(QObject *parent = nullptr);

    QUrl viewUrl() const override;
    TPSettingsRowsModel *rowsModel() const { return _rowsModel; }

    int numberOfSections() const { return 3; }
    QString titleForHeaderInSection(int section) const;
    int numberOfRowsInSection(int section) const;
    int heightForRow(int section, int row) const;
    TPSettingsRow cellForRow(int section, int row);
    TPSettingsRow connectionCellForRow(int row);
    TPSettingsRow languageCellForRow(int row);
    TPSettingsRow optionsCellForRow(int row);

    QStringList switchKeys() const { return _switchKeys; }
    QStringList switchTitleKeys() const { return _switchTitleKeys; }
    TPSwatchCell *swatchCell() const { return _swatchCell; }
    TPSliderCell *sizeCell() const { return _sizeCell; }
    TPSliderCell *opacityCell() const { return _opacityCell; }
    TPMarkerPreview *markerPreview() const { return m_markerPreview; }

    void reloadData();
    void reloadSection(int section);

    // The device's address may change while the app runs (another Wi-Fi network): it is
    // read again each time the screen appears.
    void viewWillAppear() override;

public slots:
    void didSelectRow(int section, int row);
    void onDeviceIPRowTapped();
    void onOpenWebIDETapped();
    void promptRenameOwner();
    void onSwitchChanged(int tag, bool on);
    // A segmented control of the language or the options section changed.
    void onSegmentChanged(int section, int selectedSegment);
    void onToastPosChanged(int selectedSegment);
    void onLangSegmentChanged(int selectedSegment);
    void onLangChangedNotification();

protected:
    void viewDidLoad() override;

private:
    QList<TPSettingsRow> rowsOfSection(int section);
    TPSettingsRow baseRow(int section, int row, const char *identifier,
                          TPSettingsRowKind::Kind kind) const;

    QStringList _switchKeys;
    QStringList _switchTitleKeys;
    TPSettingsRowsModel *_rowsModel;
    TPSwatchCell *_swatchCell;
    TPSliderCell *_sizeCell;
    TPSliderCell *_opacityCell;
    TPMarkerPreview *m_markerPreview;
};

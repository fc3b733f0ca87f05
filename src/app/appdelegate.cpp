#include "app/appdelegate.h"

#include "app/tpkhovc.h"
#include "editor/tpscripttreeindex.h"
#include "foundation/tplang.h"
#include "foundation/tplog.h"
#include "foundation/tpnotificationcenter.h"
#include "foundation/tpownerfile.h"
#include "platform/tpalertcontroller.h"
#include "platform/tpnavigationstack.h"
#include "platform/tppresenter.h"
#include "platform/tptabbarcontroller.h"
#include "scripts/tpscriptslistvc.h"
#include "scripts/tpscripttree.h"
#include "settings/tpsettingsvc.h"

#include <QPointer>

namespace {

const char *const kTabTitleKeys[] = {"tab_scripts", "tab_store", "tab_settings"};

} // namespace

AppDelegate::AppDelegate(QObject *parent) : QObject(parent), m_presenter(new TPPresenter(this)) {}

bool AppDelegate::didFinishLaunching()
{
    // Kept for the life of the process, like the delegate itself.
    connect(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged, this,
            &AppDelegate::onLangChangedNotification);
    qCInfo(tpAppLog) << "launched, language" << TPCurrentLang();
    // The editor reads the other scripts when it is first opened, not now: nothing is sent
    // at launch.
    TPScriptTreeIndex::shared()->enable(&TPScriptTree::filesOf);
    if (TPReadOwnerFile().isEmpty())
        promptOwnerNameThenBuildUI();
    else
        buildMainUI();
    return true;
}

void AppDelegate::promptOwnerNameThenBuildUI()
{
    qCInfo(tpAppLog) << "no device name yet: asking for one";
    auto *alert = new TPAlertController(TPL("owner_prompt_title"), TPL("owner_prompt_msg"),
                                        TPAlertController::Style::Alert);
    alert->addTextField({QString(), TPL("owner_prompt_ph"), false, true});
    QPointer<AppDelegate> self(this);
    alert->setTextChangedHandler([self](const QString &typed) {
        if (self)
            self->onOwnerPromptTextChanged(typed);
    });
    QPointer<TPAlertController> field(alert);
    // No cancel: the prompt is left only by saving a name.
    m_ownerSaveAction =
        alert->addAction(TPL("btn_save"), TPAlertAction::Style::Default, [self, field] {
            // After a failed write the tabs come anyway and the next launch asks again.
            if (self && field && TPSubmitOwnerName(field->text()))
                self->buildMainUI();
        });
    m_ownerSaveAction->setEnabled(false);
    m_presenter->present(alert);
}

void AppDelegate::onOwnerPromptTextChanged(const QString &typed)
{
    if (m_ownerSaveAction)
        m_ownerSaveAction->setEnabled(!TPTrimmedName(typed).isEmpty());
}

void AppDelegate::buildMainUI()
{
    if (m_tabBarController)
        return;
    qCInfo(tpAppLog) << "building the tabs";
    auto *tabs = new TPTabBarController(this);
    const auto tab = [this](TPViewController *root, int tag, const char *icon) {
        return TPTabBarController::Tab{
            new TPNavigationStack(root, m_presenter), TPL(kTabTitleKeys[tag]),
            QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/icons/%1.svg")
                     .arg(QLatin1String(icon)))};
    };
    tabs->setTabs({tab(new TPScriptsListVC(QString()), 0, "doc.text"),
                   tab(new TPKhoVC(), 1, "cart"), tab(new TPSettingsVC(), 2, "gearshape")});
    m_tabBarController = tabs;
    emit tabBarControllerChanged();
}

void AppDelegate::onLangChangedNotification()
{
    qCInfo(tpAppLog) << "language changed to" << TPCurrentLang();
    if (!m_tabBarController)
        return;
    for (int index = 0; index < m_tabBarController->rowCount(); ++index)
        m_tabBarController->setTitle(index, TPL(kTabTitleKeys[index]));
}

#include "platform/tptheme.h"

#include <cmath>

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <QQmlEngine>

double TPTheme::contrast(const QColor &a, const QColor &b)
{
    const auto luminance = [](const QColor &colour) {
        const auto channel = [](double value) {
            return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * channel(colour.redF()) + 0.7152 * channel(colour.greenF()) +
               0.0722 * channel(colour.blueF());
    };
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

const TPTheme::Palette &TPTheme::lightPalette()
{
    static const Palette palette{
        QColor(QStringLiteral("#FFFFFF")),
        QColor(QStringLiteral("#F2F2F7")),
        QColor(QStringLiteral("#FFFFFF")),
        QColor(QStringLiteral("#000000")),
        QColor(QStringLiteral("#993C3C43")),
        QColor(QStringLiteral("#6D6D72")),
        QColor(QStringLiteral("#C4C4C7")),
        QColor(QStringLiteral("#FFFFFF")),
        QColor(QStringLiteral("#4A3C3C43")),
        QColor(QStringLiteral("#007AFF")),
        QColor(QStringLiteral("#FF3B30")),
        QColor(QStringLiteral("#8E8E93")),
        QColor(QStringLiteral("#F7F7F7")),
        QColor(QStringLiteral("#D1D1D6")),
        QColor(QStringLiteral("#66000000")),
        QColor(QStringLiteral("#F2F2F2")),
        QColor(QStringLiteral("#FFFFFF")),
        QColor(QStringLiteral("#C7C7CC")),
        QColor(QStringLiteral("#EEEEEF")),
        QColor(QStringLiteral("#FFFFFF")),
        QColor(QStringLiteral("#1F000000")),
        QColor(QStringLiteral("#34C759")),
        QColor(QStringLiteral("#E9E9EA")),
        QColor(QStringLiteral("#FFFFFF")),
        QColor(QStringLiteral("#26000000")),
        QColor(QStringLiteral("#F2F6FC")),
        QColor(QStringLiteral("#F7F7F7")),
        QColor(QStringLiteral("#8E8E93")),
        QColor(QStringLiteral("#FFECEB")),
        QColor(QStringLiteral("#B3D7FF")),
        QColor(QStringLiteral("#FFE58A")),
        {QColor(QStringLiteral("#AD3DA4")), QColor(QStringLiteral("#D12F1B")),
         QColor(QStringLiteral("#707F8C")), QColor(QStringLiteral("#272AD8")),
         QColor(QStringLiteral("#3E8087"))},
        QColor(QStringLiteral("#DDF7E3")),
        QColor(QStringLiteral("#FFE1DE")),
        QColor(QStringLiteral("#A05A00")),
        QColor(QStringLiteral("#FFF4E0")),
        QColor(QStringLiteral("#7C7C80")),
    };
    return palette;
}

const TPTheme::Palette &TPTheme::darkPalette()
{
    static const Palette palette{
        QColor(QStringLiteral("#000000")),
        QColor(QStringLiteral("#000000")),
        QColor(QStringLiteral("#1C1C1E")),
        QColor(QStringLiteral("#FFFFFF")),
        QColor(QStringLiteral("#99EBEBF5")),
        QColor(QStringLiteral("#8D8D93")),
        QColor(QStringLiteral("#5A5A5F")),
        QColor(QStringLiteral("#FFFFFF")),
        QColor(QStringLiteral("#A6545458")),
        QColor(QStringLiteral("#0A84FF")),
        QColor(QStringLiteral("#FF453A")),
        QColor(QStringLiteral("#8E8E93")),
        QColor(QStringLiteral("#1C1C1E")),
        QColor(QStringLiteral("#3A3A3C")),
        QColor(QStringLiteral("#99000000")),
        QColor(QStringLiteral("#2C2C2E")),
        QColor(QStringLiteral("#1C1C1E")),
        QColor(QStringLiteral("#48484A")),
        QColor(QStringLiteral("#2C2C2E")),
        QColor(QStringLiteral("#636366")),
        QColor(QStringLiteral("#1FFFFFFF")),
        QColor(QStringLiteral("#30D158")),
        QColor(QStringLiteral("#39393D")),
        QColor(QStringLiteral("#FFFFFF")),
        QColor(QStringLiteral("#26000000")),
        QColor(QStringLiteral("#1A2130")),
        QColor(QStringLiteral("#141414")),
        QColor(QStringLiteral("#8E8E93")),
        QColor(QStringLiteral("#3A1C1A")),
        QColor(QStringLiteral("#3F638B")),
        QColor(QStringLiteral("#5C4A12")),
        {QColor(QStringLiteral("#FC5FA3")), QColor(QStringLiteral("#FC6A5D")),
         QColor(QStringLiteral("#7F8C98")), QColor(QStringLiteral("#D0BF69")),
         QColor(QStringLiteral("#67B7A4"))},
        QColor(QStringLiteral("#1B3A24")),
        QColor(QStringLiteral("#4A1F1C")),
        QColor(QStringLiteral("#FFB340")),
        QColor(QStringLiteral("#33260F")),
        QColor(QStringLiteral("#8E8E93")),
    };
    return palette;
}

TPTheme::TPTheme()
{
    followPlatformPalette();
    QCoreApplication::instance()->installEventFilter(this);
}

TPTheme *TPTheme::shared()
{
    // Lives as long as the application object, which is its parent.
    static TPTheme *theme = [] {
        auto *created = new TPTheme;
        created->setParent(QCoreApplication::instance());
        return created;
    }();
    return theme;
}

TPTheme *TPTheme::create(QQmlEngine *, QJSEngine *)
{
    TPTheme *theme = shared();
    // The engine must not delete the shared theme.
    QQmlEngine::setObjectOwnership(theme, QQmlEngine::CppOwnership);
    return theme;
}

bool TPTheme::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == QCoreApplication::instance() &&
        event->type() == QEvent::ApplicationPaletteChange)
        followPlatformPalette();
    return QObject::eventFilter(watched, event);
}

void TPTheme::setAppearance(Appearance appearance)
{
    m_appearance = appearance;
    followPlatformPalette();
}

std::optional<TPTheme::Appearance> TPTheme::appearanceNamed(const QString &name)
{
    if (name == QLatin1String("light"))
        return Appearance::Light;
    if (name == QLatin1String("dark"))
        return Appearance::Dark;
    if (name == QLatin1String("auto"))
        return Appearance::FollowPlatform;
    return std::nullopt;
}

void TPTheme::followPlatformPalette()
{
    const bool dark = m_appearance == Appearance::FollowPlatform
                          ? QGuiApplication::palette().color(QPalette::Window).lightness() < 128
                          : m_appearance == Appearance::Dark;
    if (dark == m_dark)
        return;
    m_dark = dark;
    emit paletteChanged();
}

#pragma once

#include <QColor>
#include <QObject>

#include <QVariantMap>
#include <QtQml/qqmlregistration.h>
#include <optional>

class QJSEngine;
class QQmlEngine;

// The app's colours and metrics, close to the phone platform's own, in a light and a dark
// palette. The dark one is used while the platform's palette is dark (its window colour is
// darker than mid-grey), so the app follows the system's appearance, and switches when the
// platform announces a palette change. Views read it as the singleton `Theme`.
class TPTheme : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Theme)
    QML_SINGLETON
    Q_PROPERTY(bool dark READ isDark NOTIFY paletteChanged)
    Q_PROPERTY(QColor background READ background NOTIFY paletteChanged)
    Q_PROPERTY(QColor groupedBackground READ groupedBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor groupedCell READ groupedCell NOTIFY paletteChanged)
    Q_PROPERTY(QColor label READ label NOTIFY paletteChanged)
    Q_PROPERTY(QColor secondaryLabel READ secondaryLabel NOTIFY paletteChanged)
    Q_PROPERTY(QColor sectionHeader READ sectionHeader NOTIFY paletteChanged)
    Q_PROPERTY(QColor chevron READ chevron NOTIFY paletteChanged)
    Q_PROPERTY(QColor onTint READ onTint NOTIFY paletteChanged)
    Q_PROPERTY(QColor separator READ separator NOTIFY paletteChanged)
    Q_PROPERTY(QColor tint READ tint NOTIFY paletteChanged)
    Q_PROPERTY(QColor destructive READ destructive NOTIFY paletteChanged)
    Q_PROPERTY(QColor inactive READ inactive NOTIFY paletteChanged)
    Q_PROPERTY(QColor barBackground READ barBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor highlight READ highlight NOTIFY paletteChanged)
    Q_PROPERTY(QColor scrim READ scrim NOTIFY paletteChanged)
    Q_PROPERTY(QColor alertBackground READ alertBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor fieldBackground READ fieldBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor fieldBorder READ fieldBorder NOTIFY paletteChanged)
    Q_PROPERTY(QColor segmentsBackground READ segmentsBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor selectedSegment READ selectedSegment NOTIFY paletteChanged)
    Q_PROPERTY(QColor segmentBorder READ segmentBorder NOTIFY paletteChanged)
    Q_PROPERTY(QColor switchOn READ switchOn NOTIFY paletteChanged)
    Q_PROPERTY(QColor switchOff READ switchOff NOTIFY paletteChanged)
    Q_PROPERTY(QColor switchKnob READ switchKnob NOTIFY paletteChanged)
    Q_PROPERTY(QColor switchKnobBorder READ switchKnobBorder NOTIFY paletteChanged)
    Q_PROPERTY(QColor currentLine READ currentLine NOTIFY paletteChanged)
    Q_PROPERTY(QColor gutterBackground READ gutterBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor gutterNumber READ gutterNumber NOTIFY paletteChanged)
    Q_PROPERTY(QColor errorBackground READ errorBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor selection READ selection NOTIFY paletteChanged)
    Q_PROPERTY(QColor addedLine READ addedLine NOTIFY paletteChanged)
    Q_PROPERTY(QColor removedLine READ removedLine NOTIFY paletteChanged)
    Q_PROPERTY(QColor warning READ warning NOTIFY paletteChanged)
    Q_PROPERTY(QColor warningBackground READ warningBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor activity READ activity NOTIFY paletteChanged)
    Q_PROPERTY(int barHeight READ barHeight CONSTANT)
    Q_PROPERTY(int tabBarHeight READ tabBarHeight CONSTANT)
    Q_PROPERTY(int bodySize READ bodySize CONSTANT)
    // The widest a list or a settings table is laid out; a wider window centres it, as a
    // tablet's readable width does, instead of stretching rows across the screen.
    Q_PROPERTY(int readableWidth READ readableWidth CONSTANT)

public:
    // The code editor's colour for each kind of Lua token.
    struct SyntaxColors
    {
        QColor keyword;
        QColor string;
        QColor comment;
        QColor number;
        QColor functionName;
    };

    struct Palette
    {
        // screens
        QColor background;
        QColor groupedBackground;
        QColor groupedCell;
        // text
        QColor label;
        QColor secondaryLabel;
        QColor sectionHeader;
        QColor chevron;
        QColor onTint;
        // lines and controls
        QColor separator;
        QColor tint;
        QColor destructive;
        QColor inactive;
        QColor barBackground;
        QColor highlight;
        QColor scrim;
        QColor alertBackground;
        QColor fieldBackground;
        QColor fieldBorder;
        QColor segmentsBackground;
        QColor selectedSegment;
        QColor segmentBorder;
        QColor switchOn;
        QColor switchOff;
        QColor switchKnob;
        QColor switchKnobBorder;
        // the code editor
        QColor currentLine;
        QColor gutterBackground;
        QColor gutterNumber;
        QColor errorBackground;
        QColor selection;
        // every match of the find bar; the current one is the selection
        QColor findMatch;
        SyntaxColors syntax;
        // a version's lines against the editor's text
        QColor addedLine;
        QColor removedLine;
        // a lint warning's mark and its message's bar
        QColor warning;
        QColor warningBackground;
        // a busy indicator's spinner, over the bars and the pages alike
        QColor activity;
    };

    // The contrast ratio of two opaque colours, from their relative luminance (WCAG 2): 1 for
    // the same colour, 21 for black on white.
    static double contrast(const QColor &a, const QColor &b);

    static const Palette &lightPalette();
    static const Palette &darkPalette();

    // The one theme of the process, shared by the views and the controllers.
    static TPTheme *shared();

    // The appearance the app shows: the platform's, or one forced for trying the app on a
    // desktop (the --appearance option).
    enum class Appearance { FollowPlatform, Light, Dark };
    void setAppearance(Appearance appearance);
    // "light", "dark" or "auto" (the platform's); nothing for any other text.
    static std::optional<Appearance> appearanceNamed(const QString &name);
    static TPTheme *create(QQmlEngine *, QJSEngine *);

    bool isDark() const { return m_dark; }
    const Palette &palette() const { return m_dark ? darkPalette() : lightPalette(); }
    QColor background() const { return palette().background; }
    QColor groupedBackground() const { return palette().groupedBackground; }
    QColor groupedCell() const { return palette().groupedCell; }
    QColor label() const { return palette().label; }
    QColor secondaryLabel() const { return palette().secondaryLabel; }
    QColor sectionHeader() const { return palette().sectionHeader; }
    QColor chevron() const { return palette().chevron; }
    QColor onTint() const { return palette().onTint; }
    QColor separator() const { return palette().separator; }
    QColor tint() const { return palette().tint; }
    QColor destructive() const { return palette().destructive; }
    QColor inactive() const { return palette().inactive; }
    QColor barBackground() const { return palette().barBackground; }
    QColor highlight() const { return palette().highlight; }
    QColor scrim() const { return palette().scrim; }
    QColor alertBackground() const { return palette().alertBackground; }
    QColor fieldBackground() const { return palette().fieldBackground; }
    QColor fieldBorder() const { return palette().fieldBorder; }
    QColor segmentsBackground() const { return palette().segmentsBackground; }
    QColor selectedSegment() const { return palette().selectedSegment; }
    QColor segmentBorder() const { return palette().segmentBorder; }
    QColor switchOn() const { return palette().switchOn; }
    QColor switchOff() const { return palette().switchOff; }
    QColor switchKnob() const { return palette().switchKnob; }
    QColor switchKnobBorder() const { return palette().switchKnobBorder; }
    QColor currentLine() const { return palette().currentLine; }
    QColor gutterBackground() const { return palette().gutterBackground; }
    QColor gutterNumber() const { return palette().gutterNumber; }
    QColor errorBackground() const { return palette().errorBackground; }
    QColor addedLine() const { return palette().addedLine; }
    QColor removedLine() const { return palette().removedLine; }
    QColor warning() const { return palette().warning; }
    QColor warningBackground() const { return palette().warningBackground; }
    QColor activity() const { return palette().activity; }
    QColor selection() const { return palette().selection; }
    QColor findMatch() const { return palette().findMatch; }
    const SyntaxColors &syntaxColors() const { return palette().syntax; }
    int barHeight() const { return 44; }
    int tabBarHeight() const { return 56; }
    int bodySize() const { return 17; }
    int readableWidth() const { return 672; }

signals:
    void paletteChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    TPTheme();
    void followPlatformPalette();

    bool m_dark = false;
    Appearance m_appearance = Appearance::FollowPlatform;
};

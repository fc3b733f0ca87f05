#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <array>

// The editor's text size: eight steps from small to large, the described 14 points the
// default, changed by Ctrl+plus, Ctrl+minus and Ctrl+0 or by pinching the text, and
// remembered in the app's own settings (never sent to the engine).
class TPTextSize : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the editor screen")
    Q_PROPERTY(int step READ step WRITE setStep NOTIFY changed)
    Q_PROPERTY(qreal points READ points NOTIFY changed)

public:
    static constexpr std::array<qreal, 8> Points = {10, 11, 12, 14, 16, 18, 21, 24};
    static constexpr int DefaultStep = 3;
    static constexpr auto SettingsKey = "tp_editor_text_size";
    // How much a pinch must spread (or close) the fingers to go one step.
    static constexpr qreal PinchPerStep = 1.2;

    explicit TPTextSize(QObject *parent = nullptr);

    int step() const { return m_step; }
    void setStep(int step);
    qreal points() const { return Points.at(size_t(m_step)); }
    // The size the user chose last, as stored.
    static int storedStep();

public slots:
    void larger() { setStep(m_step + 1); }
    void smaller() { setStep(m_step - 1); }
    void reset() { setStep(DefaultStep); }
    // A pinch on the text began; `scale` is how far it has spread the fingers since (1 at
    // its start): each PinchPerStep is a step.
    void beginPinch();
    void pinch(qreal scale);

signals:
    void changed();

private:
    int m_step;
    int m_pinchStartStep = DefaultStep;
};

// The result lamp of the heartbeat test.
#pragma once

#include <QCoreApplication>
#include <QRadioButton>
#include <QTime>

#include <chrono>
#include <cstdint>

/// Tells its states apart by shape and tool tip. Checked only after an answer. The parent has the tool tip as
/// well, because the lamp lets the mouse through. It stays of Qt's class for screen readers.
class HeartbeatLamp final : public QRadioButton {
    Q_DECLARE_TR_FUNCTIONS(HeartbeatLamp)

public:
    enum class State : std::uint8_t { notTested, answered, silent };

    explicit HeartbeatLamp(QWidget* parent = nullptr);

    void showResult(bool answered, QTime at, std::chrono::milliseconds took);
    void showNotTested();
    /// A lamp that others switched off is not tested.
    [[nodiscard]] State state() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void tell(const QString& text);

    bool m_silent = false; ///< the last test had no answer
};

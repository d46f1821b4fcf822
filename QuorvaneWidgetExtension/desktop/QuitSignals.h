#pragma once
#include <QObject>
#include <QSocketNotifier>
#include <array>

namespace quorvane::desktop {

/// Turns the signals by which a program is asked to end (INT, TERM, HUP) into one of its own events. One per process.
class QuitSignals : public QObject {
    Q_OBJECT

public:
    explicit QuitSignals(QObject* parent = nullptr);
    ~QuitSignals() override;
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

Q_SIGNALS:
    void received();

private:
    std::array<int, 2> pipe_{-1, -1};
    QSocketNotifier* notifier_ = nullptr;
};

}  // namespace quorvane::desktop

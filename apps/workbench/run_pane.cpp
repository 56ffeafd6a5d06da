// A bar without a known share moves to and fro, as long runs of one block without steps do.
#include "workbench/run_pane.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QToolButton>

#include "qt/text_measure_qt.h"
#include "workbench/workbench.h"

namespace photrak {

RunPane::RunPane(const std::function<void()>& stop, QWidget* parent) : QWidget(parent) {
    constexpr int barWidth = 110, percent = 100;
    setObjectName(QStringLiteral("RunPane"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    state_ = new QLabel(this);
    state_->setObjectName(QStringLiteral("Run"));
    state_->setAccessibleName(QStringLiteral("Run"));
    text_ = new QLabel(this);
    text_->setAccessibleName(QStringLiteral("Time taken and left"));
    bar_ = new QProgressBar(this);
    bar_->setAccessibleName(QStringLiteral("Share of the run"));
    bar_->setFixedWidth(barWidth);
    bar_->setRange(0, percent);
    bar_->setTextVisible(false);
    auto* button = new QToolButton(this);
    button->setText(QStringLiteral("Stop"));
    button->setAccessibleName(QStringLiteral("Stop the run"));
    button->setAutoRaise(true);
    connect(button, &QToolButton::clicked, this, stop);
    stop_ = button;
    for (QLabel* label : {state_, text_}) label->setTextFormat(Qt::PlainText);
    for (QWidget* part : {static_cast<QWidget*>(state_), static_cast<QWidget*>(bar_),
                          static_cast<QWidget*>(text_), stop_}) {
        row->addWidget(part);
    }
}

void RunPane::Show(const Workbench& workbench) {
    constexpr int percent = 100;
    const std::string state = RunStateText(workbench);
    state_->setText(ToQString(state));
    text_->setText(ToQString(RunProgressText(workbench)));
    for (QWidget* part : {static_cast<QWidget*>(bar_), static_cast<QWidget*>(text_), stop_}) {
        part->setVisible(!state.empty());
    }
    stop_->setEnabled(!workbench.run.stopAsked);
    const std::optional<double> share = RunShareDone(workbench);
    bar_->setRange(0, share || state.empty() ? percent : 0);
    if (share) bar_->setValue(qRound(percent * *share));
}

}  // namespace photrak

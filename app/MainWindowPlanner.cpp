// Configure -> Planner: the EME Planner beside the main window.
#include "MainWindow.h"

#include "PlannerWindow.h"

using namespace lunaquill;

void MainWindow::Planner()
{
    if (!planner) {
        planner = new PlannerWindow(this);
        connect(planner, SIGNAL(DisplayedTimeChanged()), this, SLOT(TimeAdjusted()));
    } else if (!planner->isVisible()) {
        planner->Replan(); // from the instant displayed now
    }
    planner->show();
    planner->raise();
    planner->activateWindow();
}

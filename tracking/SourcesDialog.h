// "Sources Configuration": all 24 sources as the home station sees them now,
// refreshed every 10 s. A click on a row makes it the tracked source; the two
// user points are typed in place in their rows. Like the other dialogs it
// writes the shared records directly and saves nothing itself.
#pragma once

#include <QDialog>
#include <QTimer>

class QTableWidgetItem;
namespace Ui {
class SourcesDialog;
}

namespace lunaquill {

class SourcesDialog : public QDialog
{
    Q_OBJECT

public:
    explicit SourcesDialog(QWidget *parent = nullptr);
    ~SourcesDialog() override;

    Ui::SourcesDialog *widgets() const { return ui; }
    QTimer &refreshTimer() { return timer; }

    // Closing stops the refresh: a closed dialog computes nothing.
    void done(int result) override;

public slots:
    void SourceChanged(QTableWidgetItem *item);
    void ItemPressed(QTableWidgetItem *item);
    void TimerEvent();

private:
    void Refresh();
    void StoreUserPoint(QTableWidgetItem *item);

    Ui::SourcesDialog *ui;
    QTimer timer;
};

} // namespace lunaquill

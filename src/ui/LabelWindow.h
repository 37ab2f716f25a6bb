#pragma once

#include "app/Screens.h"
#include "ui/parts/RefreshScheduler.h"

#include <QWidget>

class QStackedWidget;

namespace parcelory {

class Badge;
class BusyBar;
class Button;
class EmptyState;
class FindingList;
class LabelSheet;
class Notice;
class SegmentedControl;
class TextLabel;
class VerdictNotice;

/// The secondary window that shows a label at any size, upright or as the printer turns it, and what was read from it.
/// It follows the place from which it was opened.
class LabelWindow : public QWidget {
    Q_OBJECT
public:
    LabelWindow(AppState &app, Screens &screens, QWidget *parent = nullptr);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QWidget *makeToolbar();
    QWidget *makePanel();
    QWidget *makeFoot();
    void addShortcuts();
    bool isTurnedByPrinter() const;
    void refresh();
    void refreshPanel(const ShipmentRecord &record, const LabelSight &sight);
    void refreshFoot(const LabelPicture &picture);
    void refreshZoom();
    void showChosen();
    void copy();

    AppState &m_app;
    Screens &m_screens;
    Button *m_smaller, *m_larger, *m_copy, *m_save;
    SegmentedControl *m_fit, *m_turn;
    TextLabel *m_percent;
    BusyBar *m_bar;
    QStackedWidget *m_pages; ///< the label, or why it cannot be shown
    LabelSheet *m_sheet;
    EmptyState *m_empty;
    TextLabel *m_name, *m_service, *m_bought, *m_tracking, *m_hint;
    Badge *m_badge;
    VerdictNotice *m_verdict;
    FindingList *m_findings;
    Notice *m_foot;
    TextLabel *m_size;
    bool m_isUpright;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

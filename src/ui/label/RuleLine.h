#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

/// One quiet line: what the shipping rules say about the parcel with the chosen rate. Shows the most severe rule, in at
/// most two lines of text; a link opens the list of the others.
class RuleLine : public QWidget {
    Q_OBJECT
public:
    explicit RuleLine(LabelScreen &screen, QWidget *parent = nullptr);

    /// What Tab reaches; it is in no layout.
    QWidget *link() const { return m_more; }
    /// In a window that is too low for the line, it is not shown.
    void setRoom(bool hasRoom);

signals:
    void rulesRequested();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void refresh();
    void arrange();
    void openList();

    LabelScreen &m_screen;
    QList<Rule> m_advice; ///< as shown
    bool m_hasRoom = true;
    TextLabel *m_text;
    Button *m_more;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

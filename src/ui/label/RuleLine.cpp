#include "ui/label/RuleLine.h"

#include "compose/rules/ShippingRules.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/Separator.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QKeyEvent>
#include <QScreen>
#include <QTextLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int glyph = 16, gap = 6, lines = 2;

/// All rules that apply, each with its source. Esc and a click elsewhere close it.
class RulePopup : public PanelFrame {
public:
    RulePopup(const QList<Rule> &advice, QWidget *parent) : PanelFrame(&Tokens::sheet, parent)
    {
        setWindowFlags(Qt::Popup);
        setAttribute(Qt::WA_DeleteOnClose);
        setAccessibleName(u"Shipping rules"_s);
        setCard();
        auto *rows = new QVBoxLayout(this);
        rows->setContentsMargins(14, 12, 14, 8);
        rows->setSpacing(2);
        for (const Rule &rule : advice) {
            auto *text = new TextLabel(rule.text, FontRole::caption);
            auto *source = new TextLabel(u"%1, %2"_s.arg(rule.source, ruleDayText(rule.checked)), FontRole::caption,
                                         &Tokens::muted);
            for (TextLabel *label : {text, source}) {
                label->setWordWrap(true);
                rows->addWidget(label);
            }
            rows->addSpacing(gap);
        }
        rows->addWidget(new Separator);
        link = new Button(u"Shipping Rules"_s, Button::Kind::link);
        rows->addWidget(link, 0, Qt::AlignLeft);
        connect(link, &QPushButton::clicked, this, &QWidget::close);
    }

    Button *link;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_Escape)
            close();
        else
            PanelFrame::keyPressEvent(event);
    }
};

} // namespace

RuleLine::RuleLine(LabelScreen &screen, QWidget *parent)
    : QWidget(parent), m_screen(screen), m_text(new TextLabel({}, FontRole::caption)),
      m_more(new Button({}, Button::Kind::link)), m_refresh([this] { refresh(); })
{
    setAccessibleRole(this, QAccessible::Notification);
    auto *icon = new IconView(u"ui_info"_s, glyph);
    icon->setParent(this);
    icon->resize(icon->sizeHint());
    m_text->setParent(this);
    m_text->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_more->setParent(this);
    m_more->setFont(Theme::current().font(FontRole::captionStrong));
    m_more->ignoreReturn();
    m_more->setFixedHeight(QFontMetrics(m_text->font()).lineSpacing() + 2);
    setFixedHeight(lines * QFontMetrics(m_text->font()).lineSpacing() + 2);
    connect(m_more, &QPushButton::clicked, this, &RuleLine::openList);
    m_refresh.follow(screen);
    refresh();
}

void RuleLine::setRoom(bool hasRoom)
{
    m_hasRoom = hasRoom;
    setVisible(m_hasRoom && !m_advice.isEmpty());
}

void RuleLine::refresh()
{
    const QList<Rule> advice = m_screen.selectedRate() ? m_screen.advice() : QList<Rule>();
    setVisible(m_hasRoom && !advice.isEmpty());
    if (std::exchange(m_advice, advice) == advice || advice.isEmpty())
        return;
    const qsizetype others = advice.size() - 1;
    m_more->setText(u"%1 more"_s.arg(others));
    m_more->setVisible(others > 0);
    const QString text = advice.first().text;
    nameWidget(m_more, (others == 1 ? u"%1 more shipping rule"_s : u"%1 more shipping rules"_s).arg(others));
    setToolTip(plainToolTip(text));
    nameWidget(this, text);
    arrange();
    if (isVisible())
        announce(this);
}

void RuleLine::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrange();
}

/// Breaks the text into at most two lines and puts the link behind its end.
void RuleLine::arrange()
{
    if (m_advice.isEmpty())
        return;
    const QFontMetrics metrics(m_text->font());
    const bool isAlone = m_more->isHidden();
    const QString separator = isAlone ? QString() : u" ·"_s;
    const int left = glyph + gap, room = width() - left;
    const int linkWidth = isAlone ? 0 : m_more->sizeHint().width() + metrics.horizontalAdvance(separator);
    QString first = m_advice.first().text, rest;
    if (metrics.horizontalAdvance(first) + linkWidth > room) {
        QTextLayout layout(first, m_text->font());
        layout.beginLayout();
        QTextLine line = layout.createLine();
        line.setLineWidth(room);
        const int length = line.textLength();
        layout.endLayout();
        rest = metrics.elidedText(first.mid(length), Qt::ElideRight, room - linkWidth);
        first = first.left(length).trimmed();
    }
    const QString last = (rest.isEmpty() ? first : rest) + separator;
    m_text->setText(rest.isEmpty() && metrics.horizontalAdvance(last) + linkWidth <= room
                        ? last
                        : first + u'\n' + rest + separator);
    m_text->setGeometry(left, 0, room, height());
    const bool isSecondLine = m_text->text().contains(u'\n');
    const int end = metrics.horizontalAdvance(isSecondLine ? rest + separator : last);
    m_more->resize(m_more->sizeHint());
    m_more->move(left + end - 3, isSecondLine ? metrics.lineSpacing() - 1 : -1);
}

void RuleLine::openList()
{
    auto *list = new RulePopup(m_advice, this);
    connect(list->link, &QPushButton::clicked, this, &RuleLine::rulesRequested);
    list->setFixedWidth(width());
    list->adjustSize();
    QPoint place = mapToGlobal(rect().bottomLeft());
    if (const QScreen *shown = screen())
        place.setY(std::min(place.y(), shown->availableGeometry().bottom() - list->height()));
    list->move(place);
    list->show();
    list->link->setFocus();
}

} // namespace parcelory

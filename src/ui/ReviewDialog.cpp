#include "ui/ReviewDialog.h"

#include "core/ports/Clock.h"
#include "core/ports/Prompts.h"
#include "ui/parts/Button.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QRegularExpression>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int questionWidth = 540, pictureWidth = 430, pictureHeight = 148; ///< of an enlarged part

TextLabel *paragraph(const QString &text, FontRole role = FontRole::body)
{
    auto *label = new TextLabel(breakable(text), role);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

/// Makes a text scroll if the dialog, with its title and buttons, would be taller than the parent window.
QWidget *scrolling(TextLabel *text, const QWidget *parent)
{
    constexpr int width = 400, mostHeight = 360, aroundIt = 150;
    const Theme &theme = Theme::current();
    const int room = parent ? parent->window()->height() * 7 / 10 - theme.scaled(aroundIt) : theme.scaled(mostHeight);
    const int most = std::clamp(room, theme.scaled(100), theme.scaled(mostHeight));
    if (text->heightForWidth(theme.scaled(width)) <= most)
        return text;
    auto *area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setBackgroundRole(QPalette::Base);
    area->setWidgetResizable(true);
    area->setFixedHeight(most);
    area->setWidget(text);
    return area;
}

/// An address with its lost words in bold on a colored background.
TextLabel *markedAddress(const QString &text, const QStringList &marked)
{
    auto *label = paragraph(text);
    label->setAccessibleName(text);
    QString html = text.toHtmlEscaped();
    for (const QString &word : marked) {
        const QRegularExpression whole(u"(#?\\b%1\\b)"_s.arg(QRegularExpression::escape(word)),
                                       QRegularExpression::CaseInsensitiveOption);
        const Tokens &t = Theme::current().tokens();
        html.replace(whole,
                     u"<b style='background:%1;color:%2'>&nbsp;\\1&nbsp;</b>"_s.arg(t.warnTint.name(), t.warn.name()));
    }
    label->setTextFormat(Qt::RichText);
    label->setText(html.replace(u'\n', u"<br>"_s));
    return label;
}

QWidget *addressBox(const QString &title, const QString &text, const QStringList &marked)
{
    auto *box = PanelFrame::card();
    box->setFill(&Tokens::panel);
    auto *inner = new QVBoxLayout(box);
    inner->setContentsMargins(12, 10, 12, 10);
    inner->addWidget(markedAddress(text, marked), 0, Qt::AlignTop);
    auto *column = new QWidget;
    auto *rows = new QVBoxLayout(column);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(5);
    rows->addWidget(new TextLabel(title, FontRole::captionStrong, &Tokens::muted));
    rows->addWidget(box, 1);
    return column;
}

/// A label's picture; the place that the question is about has a tint behind the ink and a frame.
QLabel *pictureLabel(const QuestionPicture &picture, QSize room)
{
    const Theme &theme = Theme::current();
    QImage image = QImage::fromData(picture.png).convertToFormat(QImage::Format_RGB32);
    const double sharpness = qApp->devicePixelRatio();
    const QSize pixels = image.size().scaled(room * sharpness, Qt::KeepAspectRatio);
    const double scale = double(pixels.width()) / image.width();
    image = image.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (!picture.mark.isEmpty()) {
        const QRectF mark(QPointF(picture.mark.topLeft()) * scale, QSizeF(picture.mark.size()) * scale);
        const QRectF frame = mark.adjusted(-5 * sharpness, -3 * sharpness, 5 * sharpness, 3 * sharpness);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setCompositionMode(QPainter::CompositionMode_Multiply);
        painter.setPen(QPen(lightTokens().warnEdge, 2.5 * sharpness));
        painter.setBrush(lightTokens().warnTint); // paper is white in dark mode, too
        painter.drawRoundedRect(frame, 4 * sharpness, 4 * sharpness);
    }
    auto *label = new QLabel;
    QPixmap pixmap = QPixmap::fromImage(image);
    pixmap.setDevicePixelRatio(sharpness);
    label->setPixmap(pixmap);
    label->setAccessibleName(picture.name);
    label->setStyleSheet(
        u"border: 1px solid %1; background: white; padding: 3px"_s.arg(theme.color(&Tokens::control).name()));
    label->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return label;
}

void addComparison(Dialog *dialog, const Comparison &comparison, const std::optional<QuestionPicture> &picture)
{
    if (!comparison.lead.isEmpty())
        dialog->body()->addWidget(paragraph(comparison.lead));
    auto *boxes = new QHBoxLayout;
    boxes->setSpacing(12);
    boxes->addWidget(addressBox(comparison.leftTitle, comparison.left, comparison.marked), 1);
    boxes->addWidget(addressBox(comparison.rightTitle, comparison.right, {}), 1);
    dialog->body()->addLayout(boxes);
    if (picture) {
        const Theme &theme = Theme::current();
        dialog->body()->addWidget(new TextLabel(picture->caption, FontRole::captionStrong, &Tokens::muted));
        dialog->body()->addWidget(pictureLabel(*picture, {theme.scaled(pictureWidth), theme.scaled(pictureHeight)}));
    }
    dialog->body()->addWidget(paragraph(comparison.closing, FontRole::strong));
}

/// A thumbnail is at the left of the text, an enlarged part below it.
void addText(Dialog *dialog, const Question &question, const QWidget *parent)
{
    QWidget *text = scrolling(paragraph(question.text), parent);
    if (!question.picture) {
        dialog->body()->addWidget(text);
        return;
    }
    const Theme &theme = Theme::current();
    auto *row = new QHBoxLayout;
    row->setSpacing(14);
    row->addWidget(pictureLabel(*question.picture, {theme.scaled(82), theme.scaled(126)}), 0, Qt::AlignTop);
    row->addWidget(text, 1, Qt::AlignTop);
    dialog->body()->addLayout(row);
}

} // namespace

Dialog *makeAlert(Clock &clock, const QString &title, const QString &text, QWidget *parent)
{
    auto *dialog = new Dialog(clock, title, u"parcelory_mark"_s, &Tokens::accent, 520, parent);
    dialog->setAccessibleDescription(text);
    dialog->body()->addWidget(scrolling(paragraph(text), parent));
    dialog->addButton(u"OK"_s, QDialog::Accepted, Button::Kind::solid);
    return dialog;
}

Dialog *makeQuestion(Clock &clock, const Question &question, QWidget *parent)
{
    auto *dialog = new Dialog(clock, question.title, u"ui_warning"_s, &Tokens::warn, questionWidth, parent);
    dialog->setAccessibleDescription(question.text);
    if (question.comparison)
        addComparison(dialog, *question.comparison, question.picture);
    else
        addText(dialog, question, parent);
    for (int choice = 0; choice < question.choices.size(); ++choice) {
        const bool safe = choice == question.safeChoice;
        dialog->addButton(question.choices[choice], choice + 1, safe ? Button::Kind::solid : Button::Kind::standard);
    }
    return dialog;
}

} // namespace parcelory

#include "ui/ReviewDialog.h"

#include "core/ports/Clock.h"
#include "core/ports/Prompts.h"
#include "ui/parts/Button.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"
#include "ui/preview/PictureButton.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QRegularExpression>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int questionWidth = 540, widerQuestion = 600; ///< with an enlarged picture
constexpr int pictureWidth = 490, pictureHeight = 132;  ///< of an enlarged part

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

/// Above several pictures, the caption counts them.
PictureButton *addPicture(QBoxLayout *layout, const Question &question, QSize room)
{
    const Theme &theme = Theme::current();
    auto *picture = new PictureButton(question.pictures, {theme.scaled(room.width()), theme.scaled(room.height())});
    if (const QString text = picture->caption(); !text.isEmpty()) {
        auto *caption = new TextLabel(text, FontRole::captionStrong, &Tokens::muted);
        layout->addWidget(caption);
        QObject::connect(picture, &PictureButton::turned, caption,
                         [caption, picture] { caption->setText(picture->caption()); });
    }
    layout->addWidget(picture, 0, Qt::AlignTop);
    QObject::connect(picture, &QAbstractButton::clicked, picture, [enlarge = question.enlarge] {
        if (enlarge)
            enlarge();
    });
    return picture;
}

/// Gives the picture, if there is one.
QWidget *addComparison(Dialog *dialog, const Question &question)
{
    const Comparison &comparison = *question.comparison;
    if (!comparison.lead.isEmpty())
        dialog->body()->addWidget(paragraph(comparison.lead));
    auto *boxes = new QHBoxLayout;
    boxes->setSpacing(12);
    boxes->addWidget(addressBox(comparison.leftTitle, comparison.left, comparison.marked), 1);
    boxes->addWidget(addressBox(comparison.rightTitle, comparison.right, comparison.markedRight), 1);
    dialog->body()->addLayout(boxes);
    QWidget *picture =
        question.pictures.isEmpty() ? nullptr : addPicture(dialog->body(), question, {pictureWidth, pictureHeight});
    if (!comparison.same.isEmpty()) {
        auto *same = new Notice(u"ui_success"_s, &Tokens::ok, FontRole::caption);
        same->setText(comparison.same);
        dialog->body()->addWidget(same);
    }
    dialog->body()->addWidget(paragraph(comparison.closing, FontRole::strong));
    return picture;
}

/// A thumbnail is at the left of the text. Gives the picture, if there is one.
QWidget *addText(Dialog *dialog, const Question &question, const QWidget *parent)
{
    QWidget *text = scrolling(paragraph(question.text), parent);
    if (question.pictures.isEmpty()) {
        dialog->body()->addWidget(text);
        return nullptr;
    }
    auto *row = new QHBoxLayout;
    row->setSpacing(14);
    QWidget *picture = addPicture(row, question, {82, 126});
    row->addWidget(text, 1, Qt::AlignTop);
    dialog->body()->addLayout(row);
    return picture;
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
    auto *dialog =
        new Dialog(clock, question.title, u"ui_warning"_s, &Tokens::warn,
                   question.comparison && !question.pictures.isEmpty() ? widerQuestion : questionWidth, parent);
    dialog->setAccessibleDescription(question.text);
    QWidget *picture = question.comparison ? addComparison(dialog, question) : addText(dialog, question, parent);
    for (int choice = 0; choice < question.choices.size(); ++choice) {
        const bool safe = choice == question.safeChoice;
        QWidget *button = dialog->addButton(question.choices[choice], choice + 1,
                                            safe ? Button::Kind::solid : Button::Kind::standard);
        if (picture) // after the answers
            QWidget::setTabOrder(button, picture);
    }
    return dialog;
}

} // namespace parcelory

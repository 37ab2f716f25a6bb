#include "practice/PracticeSignIn.h"

#include "core/AppState.h"
#include "shell/ui/parts/Button.h"
#include "shell/ui/parts/Surface.h"
#include "shell/ui/parts/TextLabel.h"

#include <QHBoxLayout>
#include <QShortcut>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

QWidget *makePracticeSignIn(AppState &app)
{
    auto *start = new Button(u"Start practice"_s, Button::Kind::solid);
    start->setFixedHeight(Theme::current().scaled(36));
    start->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QObject::connect(start, &QPushButton::clicked, &app, [&app] { app.flow = AppFlow::main; });

    auto *names = new QVBoxLayout;
    names->setSpacing(0);
    names->addWidget(new TextLabel(u"Parcelory"_s, FontRole::h1));
    names->addWidget(new TextLabel(u"Shipping desk"_s, FontRole::body, &Tokens::muted));
    auto *brand = new QHBoxLayout;
    brand->setSpacing(12);
    brand->addWidget(new IconView(u"parcelory_mark"_s, 40, &Tokens::accent));
    brand->addLayout(names, 1);
    auto *text = new TextLabel(u"The practice desk works on a carrier and printers inside this computer. Nothing is "
                               "sent, charged or printed, and its records are kept apart from the real ones."_s,
                               FontRole::caption, &Tokens::muted);
    text->setWordWrap(true);

    auto *card = Surface::card();
    card->setFixedWidth(Theme::current().scaled(420));
    auto *column = new QVBoxLayout(card);
    column->setContentsMargins(36, 32, 36, 28);
    column->setSpacing(18);
    column->addLayout(brand);
    column->addWidget(start);
    column->addWidget(new Rule);
    column->addWidget(text);

    auto *page = new Surface(&Tokens::window);
    auto *rows = new QVBoxLayout(page);
    rows->addStretch(2);
    auto *centre = new QHBoxLayout;
    centre->addStretch(1);
    centre->addWidget(card);
    centre->addStretch(1);
    rows->addLayout(centre);
    rows->addStretch(3);
    auto *enter = new QShortcut(Qt::Key_Return, page); // as signing in will be
    QObject::connect(enter, &QShortcut::activated, start, &QPushButton::click);
    page->setFocusProxy(start);
    return page;
}

} // namespace parcelory

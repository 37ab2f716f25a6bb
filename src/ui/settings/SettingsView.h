#pragma once

#include "app/Screens.h"

#include <QWidget>

class QListWidget;
class QStackedWidget;

namespace parcelory {

/// The Settings screen: its sections at the left, the chosen section's page beside them.
class SettingsView : public QWidget {
    Q_OBJECT
public:
    enum class Page { senders, boxes, printers, keys, rules, records, contacts, updates };

    SettingsView(AppState &app, Screens &screens, QWidget *parent = nullptr);

    void showPage(Page page);

private:
    void add(const QString &title, const QString &icon, QWidget *page);

    QListWidget *m_sections;
    QStackedWidget *m_pages;
};

} // namespace parcelory

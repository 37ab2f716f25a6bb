#pragma once

#include "ui/parts/RefreshScheduler.h"
#include "ui/settings/SettingsPage.h"

namespace parcelory {

class Button;
class CopyTable;
class LineEdit;
class Notice;
class ProgressBar;
class RecordsScreen;

/// Settings ▸ Records: the copies of the records, and the check of the mailing log.
class RecordsPage : public SettingsPage {
    Q_OBJECT
public:
    explicit RecordsPage(RecordsScreen &records, QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void appendStatus();
    void appendCopies();
    void appendLog();
    void refresh();
    void refreshLog();
    void openRestore();

    RecordsScreen &m_records;
    Notice *m_damage;
    Notice *m_age;
    TextLabel *m_detail;
    Button *m_copy;
    LineEdit *m_folder;
    Notice *m_message;
    Notice *m_restored;
    CopyTable *m_copies;
    Button *m_restore;
    TextLabel *m_sum;
    Button *m_verify;
    Notice *m_result;
    TextLabel *m_findings;
    ProgressBar *m_progress;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

#pragma once

#include <QByteArray>
#include <QList>
#include <QScrollArea>

class QPdfDocument;
class QPdfView;
class QVBoxLayout;

namespace parcelory {

/// The pages of several PDF documents in one column, scaled to the available width.
class DocumentPages : public QScrollArea {
    Q_OBJECT
public:
    explicit DocumentPages(const QString &name, QWidget *parent = nullptr);
    ~DocumentPages() override;

    void setDocuments(const QList<QByteArray> &documents);
    /// False if a document cannot be shown.
    bool areReadable() const;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Part {
        QPdfDocument *document;
        QPdfView *view;
    };

    void clear();
    void fit();

    QVBoxLayout *m_column;
    QList<Part> m_parts;
};

} // namespace parcelory

#pragma once

#include <QByteArray>
#include <QList>
#include <QScrollArea>

class QPdfDocument;
class QPdfView;
class QVBoxLayout;

namespace parcelory {

/// The pages of several PDF documents below one another, as wide as the place they have.
class DocumentPages : public QScrollArea {
    Q_OBJECT
public:
    explicit DocumentPages(const QString &name, QWidget *parent = nullptr);
    ~DocumentPages() override;

    void setDocuments(const QList<QByteArray> &documents);
    /// False when one of them cannot be shown.
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

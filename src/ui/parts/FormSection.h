#pragma once

#include "ui/parts/TextLabel.h"

class QHBoxLayout;
class QVBoxLayout;

namespace parcelory {

/// One row of a form: a right-aligned label and its fields. A row is shown or hidden as a whole.
class FormRow : public QWidget {
public:
    static constexpr int labelWidth = 62;

    /// `width` 0 means the label's natural width. An empty label with a width keeps the space.
    explicit FormRow(const QString &label = {}, int width = labelWidth, QWidget *parent = nullptr);

    /// Appends a widget; `stretch` is its share of the remaining width.
    FormRow *add(QWidget *widget, int stretch = 0);
    /// Appends a label for the next widget; `width` 0 means its natural width.
    FormRow *say(const QString &text, int width = 0, FontRole role = FontRole::body);
    FormRow *fill(); ///< leaves the rest of the row empty

private:
    QHBoxLayout *m_row;
};

/// A group of rows. Its title is in the gutter beside the first row, so that titles take no height.
class FormSection : public QWidget {
public:
    static constexpr int gutter = 84;

    explicit FormSection(const QString &title, QWidget *parent = nullptr);

    FormRow *addRow(const QString &label = {});
    /// Less space between the rows.
    void setDense(bool dense);
    /// Adds a widget that is aligned with the rows' fields.
    void addBelowFields(QWidget *widget);

private:
    QVBoxLayout *m_rows;
};

} // namespace parcelory

#pragma once

#include "ui/parts/TextLabel.h"

class QHBoxLayout;
class QVBoxLayout;

namespace parcelory {

/// One row of a form: a right-aligned label and what stands behind it. A row is shown and hidden as a whole.
class FormRow : public QWidget {
public:
    static constexpr int labelWidth = 62;

    /// `label` names `field` for screen readers too; an empty one only keeps the place.
    explicit FormRow(const QString &label = {}, int width = labelWidth, QWidget *parent = nullptr);

    /// Appends a widget; `stretch` shares the width that is left.
    FormRow *add(QWidget *widget, int stretch = 0);
    /// Appends a label for the widget after it. Of its natural width when `width` is 0.
    FormRow *say(const QString &text, int width = 0, FontRole role = FontRole::body);
    FormRow *fill(); ///< the rest stays empty

private:
    QHBoxLayout *m_row;
};

/// A group of rows with its name in the gutter beside the first one, so that headings take no height.
class FormSection : public QWidget {
public:
    static constexpr int gutter = 84;

    explicit FormSection(const QString &title, QWidget *parent = nullptr);

    FormRow *addRow(const QString &label = {});
    /// Anything else that stands where the rows' fields stand.
    void addBelowFields(QWidget *widget);

private:
    QVBoxLayout *m_rows;
};

} // namespace parcelory

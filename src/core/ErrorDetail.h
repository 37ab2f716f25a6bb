#pragma once

#include <QString>

#include <exception>
#include <utility>

namespace parcelory {

/// What support needs to know of a failure and the clerk does not: ids, hosts, the system's own words. Only the error
/// log shows it.
class ErrorDetail {
public:
    explicit ErrorDetail(QString detail) : m_detail(std::move(detail)) {}
    virtual ~ErrorDetail() = default;

    const QString &detail() const { return m_detail; }

private:
    QString m_detail;
};

/// An error of class `Error` with such a detail.
template <typename Error>
class Detailed : public Error, public ErrorDetail {
public:
    Detailed(const QString &description, QString detail) : Error(description), ErrorDetail(std::move(detail)) {}
};

/// The detail of any exception; empty if the exception has no detail.
inline QString detailOf(const std::exception &error)
{
    const auto *detailed = dynamic_cast<const ErrorDetail *>(&error);
    return detailed ? detailed->detail() : QString();
}

} // namespace parcelory

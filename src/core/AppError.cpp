#include "core/AppError.h"

#include "core/Text.h"

#include <exception>
#include <utility>

namespace parcelory {

AppError::AppError(const QString &description)
    : m_description(firstCharacters(description, longest)), m_utf8(m_description.toUtf8())
{
}

SystemError::SystemError(int code, QString description) : AppError(std::move(description)), m_code(code) {}

QString describe(const std::exception &error)
{
    if (const auto *own = dynamic_cast<const AppError *>(&error))
        return own->description();
    return QString::fromUtf8(error.what());
}

} // namespace parcelory

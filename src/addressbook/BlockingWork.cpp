#include "addressbook/BlockingWork.h"

#include "core/AppError.h"

#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

AddressLoadTimeout::AddressLoadTimeout()
    : AppError(u"Apple Contacts didn't respond on this Mac — use the Endicia or vCard import instead."_s)
{
}

bool ResumeOnce::take()
{
    const std::lock_guard lock(m_access);
    return !std::exchange(m_used, true);
}

void detail::startOnThread(std::function<void()> work)
{
    std::thread(std::move(work)).detach();
}

} // namespace parcelory

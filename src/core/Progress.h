#pragma once

#include <QtGlobal>

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

namespace parcelory {

/// Cancels an operation from any thread. Copies share one state.
class CancelToken {
public:
    void cancel() const { *m_isCanceled = true; }
    bool isCanceled() const { return *m_isCanceled; }

private:
    std::shared_ptr<std::atomic<bool>> m_isCanceled = std::make_shared<std::atomic<bool>>(false);
};

/// Reports the progress of a long operation to its caller, and tells the operation when it is canceled.
class Progress {
public:
    /// `total` is 0 if it is unknown. Called on the thread of the operation.
    using Report = std::function<void(qint64 done, qint64 total)>;

    Progress() = default;
    explicit Progress(CancelToken cancel, Report report = {}) : m_cancel(std::move(cancel)), m_report(std::move(report))
    {
    }

    const CancelToken &cancelToken() const { return m_cancel; }
    /// False once the operation is canceled; it must then end early.
    [[nodiscard]] bool report(qint64 done, qint64 total = 0) const
    {
        if (m_report && !m_cancel.isCanceled())
            m_report(done, total);
        return !m_cancel.isCanceled();
    }

private:
    CancelToken m_cancel;
    Report m_report;
};

} // namespace parcelory

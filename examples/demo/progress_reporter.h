/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/base_handler.h>
#include <velmoext1/velmo_ex.h>

#include <velmo2/progress.h>

#include <boost/shared_ptr.hpp>

#include <cstddef>

namespace audit
{

/// Reports the progress of an operation to one handler, each time that the percentage changes.
class progress_reporter_t
{
public:
    progress_reporter_t(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                        boost::shared_ptr<velmoext::base_handler_t> handler,
                        boost::shared_ptr<velmo2::IProgress> progress);

    /// Reports that `done` of `all` parts are done. An operation without parts is at 100 percent.
    void report(std::size_t done, std::size_t all);

    /// Whether the user asked to end the operation.
    bool is_canceled() const { return m_progress->is_canceled(); }

private:
    void send(int percent);

    const boost::shared_ptr<velmoext::velmo_ex_t> m_ex;
    const boost::shared_ptr<velmoext::base_handler_t> m_handler;
    const boost::shared_ptr<velmo2::IProgress> m_progress;
    int m_reported_percent = -1;
};

} // namespace audit

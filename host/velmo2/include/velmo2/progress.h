/// @file
#pragma once

namespace velmo2
{

/// The progress of an operation. Implemented by the host's user interface, and called by the
/// operation, on its thread.
class IProgress
{
public:
    /// Shows the progress, from 0 to 100.
    virtual void set_percent(int percent) = 0;

    /// Returns whether the user has asked to cancel. The operation polls it and ends.
    virtual bool is_canceled() const = 0;

    virtual ~IProgress() = default;

protected:
    IProgress() = default;
    IProgress(const IProgress&) = default;
    IProgress& operator=(const IProgress&) = default;
};

} // namespace velmo2

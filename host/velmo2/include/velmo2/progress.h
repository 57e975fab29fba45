/// @file
#pragma once

namespace velmo2
{

/// How far an operation of the host has come, and whether the user wants it to end. Called on the
/// thread that reports.
class IProgress
{
public:
    /// From 0 to 100.
    virtual void set_percent(int percent) = 0;

    /// Whether the user asked to end the operation.
    virtual bool is_canceled() const = 0;

    virtual ~IProgress() = default;

protected:
    IProgress() = default;
    IProgress(const IProgress&) = default;
    IProgress& operator=(const IProgress&) = default;
};

} // namespace velmo2

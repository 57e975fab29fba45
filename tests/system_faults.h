#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

/// Receives each call and its descriptor, or -1 for none. Returns the error that the call is to
/// fail with, or 0 for none. A call that creates an unnamed file differs in its name from any other
/// open().
typedef std::function<int(const std::string& call, int descriptor)> faults_t;

/// While in scope, calls faults_t for each call of this program that changes or reads a file.
class with_faults
{
public:
    explicit with_faults(faults_t faults);
    with_faults(const with_faults&) = delete;
    with_faults& operator=(const with_faults&) = delete;
    ~with_faults();

private:
    faults_t m_faults;
};

/// While in scope, geteuid() returns another user than the owner of the program's files. The
/// system's own permission checks do not change.
class with_other_user
{
public:
    with_other_user();
    with_other_user(const with_other_user&) = delete;
    with_other_user& operator=(const with_other_user&) = delete;
    ~with_other_user();
};

/// While in scope, no call reads or writes more bytes at once.
class with_short_pieces
{
public:
    with_short_pieces(std::size_t read, std::size_t written);
    with_short_pieces(const with_short_pieces&) = delete;
    with_short_pieces& operator=(const with_short_pieces&) = delete;
    ~with_short_pieces();
};

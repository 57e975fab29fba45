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
class faults_scope_t
{
public:
    explicit faults_scope_t(faults_t faults);
    faults_scope_t(const faults_scope_t&) = delete;
    faults_scope_t& operator=(const faults_scope_t&) = delete;
    ~faults_scope_t();

private:
    faults_t m_faults;
};

/// While in scope, geteuid() returns another user than the owner of the program's files. The
/// system's own permission checks do not change.
class other_user_scope_t
{
public:
    other_user_scope_t();
    other_user_scope_t(const other_user_scope_t&) = delete;
    other_user_scope_t& operator=(const other_user_scope_t&) = delete;
    ~other_user_scope_t();
};

/// While in scope, no call reads or writes more bytes at once.
class short_io_scope_t
{
public:
    short_io_scope_t(std::size_t read, std::size_t written);
    short_io_scope_t(const short_io_scope_t&) = delete;
    short_io_scope_t& operator=(const short_io_scope_t&) = delete;
    ~short_io_scope_t();
};

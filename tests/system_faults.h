#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

/// Sees each call and the descriptor that it is about, -1 for none; answers the error that the call
/// is to fail with, 0 for none. Tells a call that makes an unnamed file from any other open().
typedef std::function<int(const std::string& call, int descriptor)> faults_t;

/// Lets the calls of this program that change or read a file fail as long as this lives.
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

/// Lets this program run as another user than the one whose files it made, as far as it asks, as
/// long as this lives.
class with_other_user
{
public:
    with_other_user();
    with_other_user(const with_other_user&) = delete;
    with_other_user& operator=(const with_other_user&) = delete;
    ~with_other_user();
};

/// Lets no call read or write more at once as long as this lives.
class with_short_pieces
{
public:
    with_short_pieces(std::size_t read, std::size_t written);
    with_short_pieces(const with_short_pieces&) = delete;
    with_short_pieces& operator=(const with_short_pieces&) = delete;
    ~with_short_pieces();
};

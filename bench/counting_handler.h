#pragma once

#include <velmoext1/base_handler.h>

#include <cstddef>

namespace bench
{

/// Handler that counts the messages it receives, and does not consume them.
class counting_handler_t : public velmoext_1_4_8::base_handler_t
{
public:
    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> /*ex*/,
                    boost::shared_ptr<velmoext_1_4_8::message_t> /*msg*/) override
    {
        ++m_count;
        return false;
    }

    std::size_t count() const { return m_count; }

private:
    std::size_t m_count = 0;
};

} // namespace bench

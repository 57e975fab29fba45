#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>

/// The message of a document as plain calls of libxml2's text reader and tree give it.
struct document_oracle_t
{
    /// Why the library may return null for a document in which plain libxml2 finds a message.
    enum class refusal_t
    {
        none,
        parameter_entity,  ///< The document type refers to one: few bytes can stand for gigabytes.
        expanded_entities, ///< The message's entities stand for more than 10,000,000 bytes.
        document_size,     ///< More than 1,000,000 bytes: limits of size and number may apply.
        split_document_type, ///< It holds an instruction: what a push parser makes of that depends
                             ///< on the pieces in which it gets the document.
        fault_after_message, ///< libxml2's reader returns the message before it meets the fault.
    };

    /// Null without a message. Also null, without being read, for refusal_t::expanded_entities.
    boost::shared_ptr<velmoext_1_4_8::message_t> message;
    refusal_t refusal = refusal_t::none;
    /// For refusal_t::split_document_type, the message that a parse of the whole document gives.
    boost::shared_ptr<velmoext_1_4_8::message_t> unsplit_message;

    static document_oracle_t read(const std::wstring& text);

    /// Empty if the library's result is right, else a description of the difference.
    std::string difference(const boost::shared_ptr<velmoext_1_4_8::message_t>& result) const;
};

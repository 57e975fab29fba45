#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>

/// The message of a document as plain calls of libxml2's text reader and tree return it.
class document_oracle_t
{
public:
    explicit document_oracle_t(const std::wstring& text);

    /// Returns an empty string if the library's result is valid, else the difference.
    std::string difference(const boost::shared_ptr<velmoext_1_4_8::message_t>& result) const;

    /// Reason why the library's result may differ from that of libxml2's text reader.
    enum class exception_t
    {
        none,
        /// The document type refers to a parameter entity, of which few bytes can expand to
        /// gigabytes: any result.
        parameter_entity,
        /// The message's entities expand to more than 10,000,000 bytes: any result.
        expanded_entities,
        /// An attribute refers to an entity, and libxml2 is 2.13 or later: any result. These
        /// releases replace white space of the entity, and of references beside it, by blanks.
        attribute_entity,
        /// The document has more than 1,000,000 bytes, so that limits may apply: null.
        document_size,
        /// The document type contains an instruction: null, or the result of a parse of the whole.
        /// A push parser's result depends on the chunks in which it gets the document.
        split_document_type,
        /// The reader recovers a message from a malformed document: null, or that message.
        recovered_message
    };

    exception_t exception() const { return m_exception; }
    const boost::shared_ptr<velmoext_1_4_8::message_t>& message() const { return m_message; }

private:
    bool is_any_result_valid() const;
    void read();
    void read_whole();

    std::string m_document;
    boost::shared_ptr<velmoext_1_4_8::message_t> m_message; ///< the result of the text reader
    boost::shared_ptr<velmoext_1_4_8::message_t> m_whole_message;
    exception_t m_exception = exception_t::none;
};

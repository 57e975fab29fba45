#pragma once

#include <rova/strings.h>

#include <libxml/xmlstring.h>

#include <memory>
#include <string>

/// A string that libxml2 allocated.
typedef std::unique_ptr<xmlChar, void (*)(void*)> xml_string_t;

inline const xmlChar* to_xml(const std::string& text)
{
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

inline const char* from_xml(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

inline std::wstring wide_from_xml(const xmlChar* text)
{
    return ROVA_2_18::strings::utf8_to_utf16(from_xml(text));
}

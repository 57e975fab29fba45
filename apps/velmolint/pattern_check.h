#pragma once

#include "pattern.h"
#include "plural_check.h"
#include "style_check.h"
#include "text_report.h"

#include <string>

namespace velmolint
{

/// Checks patterns one by one.
class pattern_check_t
{
public:
    void check(const pattern_t& pattern, const std::string& language, const text_report_t& report);

private:
    void check_styles(const pattern_t& pattern, const std::string& language,
                      const text_report_t& report);

    plural_check_t m_plurals;
    style_check_t m_styles;
};

/// Compares the placeholders of a translation with those of the reference language.
void compare_placeholders(const pattern_t& reference, const std::string& reference_language,
                          const pattern_t& translation, const text_report_t& report);

} // namespace velmolint

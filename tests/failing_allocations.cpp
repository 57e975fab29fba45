#include "failing_allocations.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlmemory.h>
#include <unicode/uclean.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <new>
#include <thread>
#include <tuple>

namespace
{

// The parameter of a structured handler, constant since libxml2 2.12.
#if LIBXML_VERSION >= 21200
typedef const xmlError xml_error_t;
#else
typedef xmlError xml_error_t;
#endif

struct plan_t
{
    bool is_on = false;
    memory_t memory = memory_t::cxx;
    extent_t extent = extent_t::one;
    long successes = 0;
    bool has_failed = false;
};

thread_local plan_t plan;

bool may_allocate(memory_t memory)
{
    if (!plan.is_on || plan.memory != memory)
        return true;
    if (plan.successes > 0) {
        --plan.successes;
        return true;
    }
    plan.has_failed = true;
    plan.is_on = plan.extent == extent_t::rest;
    return false;
}

// Replacements of C's functions, for operator new, libxml2 and ICU.

void* allocate(memory_t memory, std::size_t size)
{
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc)
    return may_allocate(memory) ? std::malloc(size) : nullptr;
}

void* reallocate(memory_t memory, void* former, std::size_t size)
{
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc)
    return may_allocate(memory) ? std::realloc(former, size) : nullptr;
}

void release(void* memory)
{
    std::free(memory); // NOLINT(cppcoreguidelines-no-malloc)
}

void* xml_malloc(std::size_t size)
{
    return allocate(memory_t::libxml2, size);
}

void* xml_realloc(void* memory, std::size_t size)
{
    return reallocate(memory_t::libxml2, memory, size);
}

char* xml_strdup(const char* text)
{
    return may_allocate(memory_t::libxml2) ? strdup(text) : nullptr;
}

void* icu_malloc(const void* /*context*/, std::size_t size)
{
    return allocate(memory_t::icu, size);
}

void* icu_realloc(const void* /*context*/, void* memory, std::size_t size)
{
    return reallocate(memory_t::icu, memory, size);
}

void icu_free(const void* /*context*/, void* memory)
{
    release(memory);
}

// Both libraries require their functions to be set before any other call.
bool set_up()
{
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, icu_malloc, icu_realloc, icu_free, &status);
    return xmlMemSetup(release, xml_malloc, xml_realloc, xml_strdup) == 0 && U_SUCCESS(status);
}

const bool is_set_up = set_up();

// libxml2's state of this thread, with this test's handlers and last error in it.
class xml_state_t
{
public:
    explicit xml_state_t(bool has_error)
    {
        if (has_error)
            xmlFreeDoc(xmlReadMemory("<", 1, nullptr, nullptr, XML_PARSE_NOERROR));
        else
            xmlResetLastError();
        xmlSetGenericErrorFunc(this, on_generic_error);
        xmlSetStructuredErrorFunc(this, on_structured_error);
        m_last_error = last_error();
    }
    ~xml_state_t()
    {
        xmlSetGenericErrorFunc(nullptr, nullptr);
        xmlSetStructuredErrorFunc(nullptr, nullptr);
        xmlResetLastError();
    }
    xml_state_t(const xml_state_t&) = delete;
    xml_state_t& operator=(const xml_state_t&) = delete;

    // Returns an empty string if nothing has changed.
    std::string find_change() const
    {
        if (m_was_called)
            return "a handler of the host was called";
        if (xmlGenericError != on_generic_error || xmlGenericErrorContext != this)
            return "the generic error handler is another one";
        if (xmlStructuredError != on_structured_error || xmlStructuredErrorContext != this)
            return "the structured error handler is another one";
        return last_error() == m_last_error ? "" : "the last error is another one";
    }

private:
    // Code, domain, line and message.
    typedef std::tuple<int, int, int, std::string> error_t;

    static error_t last_error()
    {
        const xmlError* const error = xmlGetLastError();
        if (!error)
            return error_t();
        return {error->code, error->domain, error->line, error->message ? error->message : ""};
    }

    // The type of libxml2's handler has C's variable arguments.
    // NOLINTNEXTLINE(cert-dcl50-cpp)
    static void on_generic_error(void* state, const char* /*format*/, ...)
    {
        static_cast<xml_state_t*>(state)->m_was_called = true;
    }
    static void on_structured_error(void* state, xml_error_t* /*error*/)
    {
        static_cast<xml_state_t*>(state)->m_was_called = true;
    }

    bool m_was_called = false;
    error_t m_last_error;
};

enum class outcome_t
{
    no_failure,
    thrown,
    refused,
    right,
    wrong
};

struct report_t
{
    outcome_t outcome = outcome_t::no_failure;
    std::string result;
    std::string change;
    std::string next_result;
};

std::string result_of(const operation_t& operation)
{
    const attempt_t attempt = operation.prepare();
    attempt.run();
    return attempt.result();
}

// Returns whether the attempt ended without std::bad_alloc.
bool run(const attempt_t& attempt, const allocation_case_t& one, long successes)
{
    const failing_allocations_t failing(one.memory, one.extent, successes);
    try {
        attempt.run();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

outcome_t outcome_of(bool has_returned, const std::string& result, const std::string& right)
{
    if (!failing_allocations_t::has_failed())
        return outcome_t::no_failure;
    if (!result.empty())
        return result == right && has_returned ? outcome_t::right : outcome_t::wrong;
    return has_returned ? outcome_t::refused : outcome_t::thrown;
}

report_t try_once(const allocation_case_t& one, long successes)
{
    report_t report;
    if (one.thread == thread_state_t::warm)
        result_of(one.operation);
    const attempt_t attempt = one.operation.prepare();
    const bool has_error = successes % 2 != 0;
    const xml_state_t state(has_error);
    const bool has_returned = run(attempt, one, successes);
    report.change = state.find_change();
    report.result = attempt.result();
    report.outcome = outcome_of(has_returned, report.result, one.operation.right);
    report.next_result = result_of(one.operation);
    return report;
}

report_t try_on_own_thread(const allocation_case_t& one, long successes)
{
    report_t report;
    std::thread([&] { report = try_once(one, successes); }).join();
    return report;
}

void check(const report_t& report, const operation_t& operation)
{
    EXPECT_NE(report.outcome, outcome_t::wrong) << report.result;
    EXPECT_EQ(report.change, "");
    EXPECT_EQ(report.next_result, operation.right) << "on the same thread";
    EXPECT_EQ(result_of(operation), operation.right) << "on another thread";
}

std::string name_of(const allocation_case_t& one)
{
    static const char* const memories[] = {"cxx", "libxml2", "icu"};
    static const char* const extents[] = {"one", "rest"};
    static const char* const threads[] = {"fresh", "warm"};
    return one.operation.name + "_" + memories[static_cast<int>(one.memory)] + "_" +
           extents[static_cast<int>(one.extent)] + "_" + threads[static_cast<int>(one.thread)];
}

} // namespace

failing_allocations_t::failing_allocations_t(memory_t memory, extent_t extent, long successes)
{
    plan = {true, memory, extent, successes, false};
}

failing_allocations_t::~failing_allocations_t()
{
    plan.is_on = false;
}

bool failing_allocations_t::has_failed()
{
    return plan.has_failed;
}

std::vector<allocation_case_t> cases_of(const std::vector<operation_t>& operations)
{
    std::vector<allocation_case_t> cases;
    for (const operation_t& operation : operations)
        for (const memory_t memory : operation.memories)
            cases.insert(cases.end(), {{operation, memory, extent_t::one, thread_state_t::fresh},
                                       {operation, memory, extent_t::one, thread_state_t::warm},
                                       {operation, memory, extent_t::rest, thread_state_t::fresh}});
    return cases;
}

std::string name_of_case(const testing::TestParamInfo<allocation_case_t>& info)
{
    return name_of(info.param);
}

std::ostream& operator<<(std::ostream& out, const allocation_case_t& one)
{
    return out << name_of(one);
}

void allocation_test::fail_each_allocation(const allocation_case_t& one)
{
    ASSERT_TRUE(is_set_up);
    ASSERT_EQ(result_of(one.operation), one.operation.right);
    std::map<outcome_t, int> outcomes;
    long successes = 0;
    for (;; ++successes) {
        SCOPED_TRACE(successes);
        const report_t report = try_on_own_thread(one, successes);
        if (report.outcome == outcome_t::no_failure)
            break;
        ++outcomes[report.outcome];
        check(report, one.operation);
    }
    EXPECT_GT(successes, 0);
    std::cout << name_of(one) << ": " << successes << " tried, " << outcomes[outcome_t::thrown]
              << " thrown, " << outcomes[outcome_t::refused] << " refused, "
              << outcomes[outcome_t::right] << " right nevertheless\n";
}

// On allocation failure libxml2 leaks what it has allocated just before. For an element's beginning
// that is the element's name and stack entry. For an entity's reference in an attribute it is the
// reference's name. For an input that a function reads it is the input's buffer.
// The leak sanitizer looks up its exceptions under this name.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions()
{
    return "leak:xmlTextWriterStartElement\nleak:xmlStrndup\nleak:xmlAllocParserInputBuffer\n";
}

// Not inlined, since g++ would report malloc() and free() as a mismatched pair.
__attribute__((noinline)) void* operator new(std::size_t size)
{
    if (void* const memory = allocate(memory_t::cxx, size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

__attribute__((noinline)) void operator delete(void* memory) noexcept
{
    release(memory);
}

__attribute__((noinline)) void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    release(memory);
}

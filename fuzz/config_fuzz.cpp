// Each property of a configuration file is the one that a search through the whole file finds. A
// file is loaded only if the model reads it, and always unless the model admits a refusal.
#include "config_model.h"
#include "fuzz_target.h"
#include "quiet_xml.h"
#include "require.h"

#include "presentation/config_file.h"
#include "scratch_folder.h"

#include <velmoext1/config_reader.h>

#include <boost/make_shared.hpp>

#include <string>

namespace
{

using namespace velmoext_1_4_8;

const std::wstring source = L"source";
const int max_queries = 100;

class property_checks_t
{
public:
    property_checks_t(config_reader_t& reader, const config_model_t& model)
        : m_reader(reader), m_model(model)
    {
        m_message->set_source(source);
    }

    void check() const
    {
        int left = max_queries;
        for (const std::wstring& prefix : m_model.values(L"prefix"))
            for (const std::wstring& type : m_model.values(L"id"))
                for (const std::wstring& name : m_model.names())
                    if (left-- > 0)
                        check(name, type, prefix);
    }

private:
    void check(const std::wstring& name, const std::wstring& type, const std::wstring& prefix) const
    {
        m_message->set_type(type);
        m_ex->set_prefix(prefix);
        require(m_reader.read_property(m_ex, m_message, name) ==
                    m_model.property(name, type, prefix),
                "a property has the value in the file");
    }

    config_reader_t& m_reader;
    const config_model_t& m_model;
    boost::shared_ptr<velmo_ex_t> m_ex = velmo_ex_t::get(L"config_fuzz", L"");
    boost::shared_ptr<message_t> m_message = boost::make_shared<message_t>();
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    forbid_xml_output();
    static const scratch_folder_t folder;
    const std::string bytes(data, data + size);
    folder.write("source.xml", bytes);

    const auto model = config_model_t::read(bytes);
    const bool is_loaded = config_file_t::load(folder.wide_name("source.xml")) != nullptr;
    require(!is_loaded || model, "a loaded file is a configuration");
    require(is_loaded || !model || model->may_be_refused(), "a configuration is loaded");
    if (!is_loaded)
        return 0;
    const auto reader = config_reader_t::get();
    reader->set_cfg_dir(folder.wide_name(""));
    property_checks_t(*reader, *model).check();
    return 0;
}

// Shows a message in a language: localized_text CATALOGS CONFIGURATION LOCALE
#include <velmoext1/velmoext1.h>

#include <rova/strings.h>
#include <setbook2/message_catalog.h>

#include <cstdlib>
#include <iostream>

using namespace velmoext1;
using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;

namespace
{

const std::wstring source = L"audit";

// A locale without a catalog is accepted, so the catalog decides.
bool bind_catalogs(const std::wstring& directory, const std::wstring& locale)
{
    return setbook2::bindCatalogDirectory(directory, locale) && setbook2::getMessageCatalog(source);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        return EXIT_FAILURE;
    const std::wstring catalogs = utf8_to_utf16(argv[1]);
    if (!bind_catalogs(catalogs, utf8_to_utf16(argv[3])) && !bind_catalogs(catalogs, L"en"))
        std::cerr << "no catalogs in " << argv[1] << '\n';
    // Keeps the directory and the files that were read, as long as it has an owner.
    const auto configuration = config_reader_t::get();
    configuration->set_cfg_dir(basekit2::path_t(utf8_to_utf16(argv[2])));

    const auto ex = velmo_ex_t::get(L"reports", L"console");
    const auto message = message_builder_t(L"file_large")
                             .severity(message_t::warning)
                             .source(source)
                             .arg(L"path", L"/var/log/syslog")
                             .arg(L"size", 1048576)
                             .build();
    std::cout << utf16_to_utf8(readable_text(ex, message)) << '\n';
    return EXIT_SUCCESS;
}

/// @file
#pragma once

#include <setbook2/export.h>

namespace setbook2
{

/// Where the product's files are. The host application implements it and sets one for the process.
class SETBOOK2_API IProductLocations
{
public:
    /// What was set last, null where nothing is. Any thread may call at any time.
    static IProductLocations* get();
    /// Borrows the object until another one is set; null takes it back. Any thread may call, but
    /// the object must live until nobody uses any more what get() answered.
    static void set(IProductLocations* locations);

    /// The directories, each as a text that stays valid as long as the object does.
    virtual const wchar_t* get_install_dir() = 0;
    virtual const wchar_t* get_data_dir() = 0;
    virtual const wchar_t* get_config_dir() = 0;

    virtual ~IProductLocations() = default;

protected:
    IProductLocations() = default;
    IProductLocations(const IProductLocations&) = default;
    IProductLocations& operator=(const IProductLocations&) = default;
};

} // namespace setbook2

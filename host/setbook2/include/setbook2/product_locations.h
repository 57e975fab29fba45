/// @file
#pragma once

#include <setbook2/export.h>

namespace setbook2
{

/// Directories of the product. The host application implements it and sets one object.
class SETBOOK2_API IProductLocations
{
public:
    /// Returns the object that was set, or null. Any thread may call it at any time.
    static IProductLocations* get();
    /// Sets the object, or null for none. Does not own it: it must outlive every use of a pointer
    /// from get(). Any thread may call it at any time.
    static void set(IProductLocations* locations);

    // Return a directory. The text is valid as long as the object.
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

#include <setbook2/product_locations.h>

#include <atomic>

namespace setbook2
{
namespace
{

std::atomic<IProductLocations*> current{nullptr};

} // namespace

IProductLocations* IProductLocations::get()
{
    return current;
}

void IProductLocations::set(IProductLocations* locations)
{
    current = locations;
}

} // namespace setbook2

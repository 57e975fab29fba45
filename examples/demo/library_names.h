/// @file
/// Short names for the libraries' namespaces, which carry full versions.
#pragma once

namespace velmoext_1_4_8
{
}
namespace ROVA_2_18
{
}

namespace audit
{

namespace velmoext = velmoext_1_4_8;
namespace rova = ROVA_2_18;

} // namespace audit

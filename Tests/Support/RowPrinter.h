#pragma once

#include <ostream>
#include <string>

namespace TTMLTest {

// A failing table row is named by its `name` field rather than dumped as bytes.
template <typename Row>
auto operator<<(std::ostream& os, const Row& row) -> decltype(os << row.name)
{
    return os << row.name;
}

// Test names of a parameterised suite taken from the rows' `name` fields.
struct RowName {
    template <typename Info>
    std::string operator()(const Info& info) const
    {
        return info.param.name;
    }
};

}  // namespace TTMLTest

// Rows live in each test file's unnamed namespace; argument-dependent lookup finds the printer there.
namespace {
using TTMLTest::operator<<;
}  // namespace

#pragma once
// The host the tests play: the add-in built in this tree (or the one
// RAVLIN_LIBRARY names, such as a release build), loaded as the platform loads it.
#include <gmock/gmock.h>

#include <ostream>

#include "AddinHost.h"
#include "util/CharsetConversion.h"

inline std::string testedLibrary()
{
    return addinLibrary(RAVLIN_LIBRARY_PATH);
}

class TestHost : public AddinHost {
public:
    TestHost() : AddinHost(testedLibrary()) {}
};

// Matches an event that arrived and carries this data.
inline auto EventData(const std::wstring& data)
{
    return testing::Optional(testing::Field(&HostEvent::data, data));
}

// How a failing expectation shows an event (its bytes include padding).
inline void PrintTo(const HostEvent& event, std::ostream* out)
{
    *out << "{" << wstr2str(event.source) << ", " << wstr2str(event.name) << ", " << wstr2str(event.data) << "}";
}

#pragma once
// The host the tests play: the add-in built in this tree, loaded as the platform loads it.
#include "AddinHost.h"

class TestHost : public AddinHost {
public:
    TestHost() : AddinHost(RAVLIN_LIBRARY_PATH) {}
};

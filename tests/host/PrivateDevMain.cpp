// main() of the test programs that need a private /dev.
#include <gtest/gtest.h>

#include "PrivateDev.h"
#include "PrivateRun.h"

int main(int argc, char** argv)
{
    enterPrivateRun(argc, argv);
    enterPrivateDev(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

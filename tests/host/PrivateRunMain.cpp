// main() of the test programs that start servers but need the machine's /dev.
#include <gtest/gtest.h>

#include "PrivateRun.h"

int main(int argc, char** argv)
{
    enterPrivateRun(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

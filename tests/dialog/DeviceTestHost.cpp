// A host with no toolkit of its own: the window must bring GTK 2 itself.
#include "RunDeviceTest.h"

int main()
{
    return runDeviceTestThenWait();
}

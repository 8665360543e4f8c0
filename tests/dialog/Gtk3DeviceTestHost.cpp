// A host built on GTK 3: it starts GTK 3 itself, then loads the add-in and runs
// DeviceTest, whose window must then be made with GTK 3 too.
#include <gtk/gtk.h>

#include "RunDeviceTest.h"

int main(int argc, char** argv)
{
    gtk_init(&argc, &argv);
    return runDeviceTestThenWait(" gtk " + std::to_string(gtk_get_major_version()));
}

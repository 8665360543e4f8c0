#include "util/RuntimeLibrary.h"

std::atomic<int> liveComponents{0};

#pragma once

// Allocator of the host: every block the driver hands over is freed by the host.
class IMemoryManager {
public:
    virtual ~IMemoryManager() {}
    virtual bool AllocMemory(void** block, unsigned long size) = 0;
    virtual void FreeMemory(void** block) = 0;
};

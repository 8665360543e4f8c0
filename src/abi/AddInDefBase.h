#pragma once
#include "abi/Types.h"

// The host's connection object. The driver calls only SetEventQueueDepth and
// PostExternalEvent, but every slot must be declared so those two land at the
// host's vtable positions.
class IAddInDefBaseEx {
public:
    virtual ~IAddInDefBaseEx() {}
    virtual bool AddError(unsigned short code, const unsigned short* source,
                          const unsigned short* description, long scode) = 0;
    virtual bool Read(unsigned short* name, tVariant* value, long* errorCode,
                      unsigned short** errorDescription) = 0;
    virtual bool Write(unsigned short* name, tVariant* value) = 0;
    virtual bool RegisterProfileAs(unsigned short* profileName) = 0;
    virtual bool SetEventQueueDepth(long depth) = 0;
    virtual long GetEventQueueDepth() = 0;
    virtual bool PostExternalEvent(const unsigned short* source, const unsigned short* eventName,
                                   const unsigned short* data) = 0;
    virtual bool CleanEventBuffer() = 0;
    virtual bool SetStatusLine(unsigned short* text) = 0;
    virtual void ResetStatusLine() = 0;
    virtual void* GetInterface(int kind) = 0;
};

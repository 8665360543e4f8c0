#pragma once
// The interfaces the host drives a component through. The host holds one
// pointer per base, so the slot order of each is fixed by the host.
#include "abi/Types.h"

class IInitDoneBase {
public:
    virtual ~IInitDoneBase() {}
    virtual bool Init(void* connection) = 0;
    virtual bool setMemManager(void* memoryManager) = 0;
    virtual long GetInfo() = 0;
    virtual void Done() = 0;
};

class ILanguageExtenderBase {
public:
    virtual ~ILanguageExtenderBase() {}
    virtual bool RegisterExtensionAs(unsigned short** name) = 0;
    virtual long GetNProps() = 0;
    virtual long FindProp(const unsigned short* name) = 0;
    virtual const unsigned short* GetPropName(long num, long alias) = 0;
    virtual bool GetPropVal(long num, tVariant* value) = 0;
    virtual bool SetPropVal(long num, tVariant* value) = 0;
    virtual bool IsPropReadable(long num) = 0;
    virtual bool IsPropWritable(long num) = 0;
    virtual long GetNMethods() = 0;
    virtual long FindMethod(const unsigned short* name) = 0;
    virtual const unsigned short* GetMethodName(long num, long alias) = 0;
    virtual long GetNParams(long num) = 0;
    virtual bool GetParamDefValue(long num, long param, tVariant* value) = 0;
    virtual bool HasRetVal(long num) = 0;
    virtual bool CallAsProc(long num, tVariant* params, long count) = 0;
    virtual bool CallAsFunc(long num, tVariant* result, tVariant* params, long count) = 0;
};

class LocaleBase {
public:
    virtual ~LocaleBase() {}
    virtual void SetLocale(const unsigned short* locale) = 0;
};

class IComponentBase : public IInitDoneBase, public ILanguageExtenderBase, public LocaleBase {
public:
    virtual ~IComponentBase() {}
};

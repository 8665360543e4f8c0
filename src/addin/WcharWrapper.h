#pragma once

// Owns one text in both widths, for handing to calls that want either.
class WcharWrapper {
public:
    explicit WcharWrapper(const wchar_t* text);
    explicit WcharWrapper(const unsigned short* text);
    ~WcharWrapper();
    WcharWrapper(const WcharWrapper&) = delete;
    WcharWrapper& operator=(const WcharWrapper&) = delete;

    operator const wchar_t*() const { return wide; }
    operator const unsigned short*() const { return narrow; }

    static unsigned int getStrLen(const unsigned short* text);

private:
    unsigned short* narrow = nullptr;
    wchar_t* wide = nullptr;
};

#pragma once
// Builds the XML document from which the host makes its settings form. The
// host parses it, so its text is fixed to the character: one line, attributes
// in the order each element has always had them, nothing escaped here.
#include <string>

class ParametersTableBuilder {
public:
    explicit ParametersTableBuilder(bool russian);
    virtual ~ParametersTableBuilder();

    virtual void BuildHeaderPart();
    virtual void BuildPortPart();
    virtual void BuildKeyboardDevicePart();
    virtual void BuildBitsPart();
    virtual void BuildCOMPortSpeedPart();
    virtual void BuildGroupDividerPart();
    virtual void BuildPrefixPart();
    virtual void BuildSuffixPart();
    virtual void BuildKeyboardTimeoutPart(bool enabled);
    virtual void BuildCOMPortTimeoutAndEncodingPart();
    virtual void BuildGSSymbolPart();
    virtual void BuildDeviceParametersGroupEndPart();
    virtual void BuildLogParametersPart();
    virtual void BuildEndPart();

    void BuildProduct(bool keyboardTimeout);
    std::wstring GetProduct() const;
    std::wstring GetSymbolChoiceList() const;

    // Serialisation pieces shared by the builders.
    static std::wstring attribute(const std::wstring& name, const std::wstring& value);
    static std::wstring item(const std::wstring& value, const std::wstring& text);

protected:
    const wchar_t* text(const wchar_t* russianText, const wchar_t* englishText) const;
    void append(const std::wstring& fragment) { product += fragment; }

private:
    void BuildOutputDataTypePart();

    std::wstring product;
    bool russian;
};

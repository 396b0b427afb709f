#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace CoordinateTransformation {

// The parameters of a definition text such as "+proj=utm +zone=32", in order. Of two parameters with one key the first
// counts.
//
// A plain value.
class ParameterList {
public:
    ParameterList() = default;
    //   text = { white space | [ "+" ] key [ "=" value ] }
    //
    // White space around "=" and "," does not count, except before a "+" and a letter: these begin a parameter.
    explicit ParameterList(const std::string& text);

    using Parameter = std::pair<std::string, std::string>;
    // Key and value of each parameter. A parameter without a value has an empty one.
    std::vector<Parameter>::const_iterator begin() const { return parameters.begin(); }
    std::vector<Parameter>::const_iterator end() const { return parameters.end(); }

    bool has(const std::string& key) const;
    bool hasAnyOf(std::initializer_list<const char*> keys) const;
    // The value of `key`; empty if the key is missing or has no value.
    std::string get(const std::string& key) const;

    // Whether the text, or one of the added texts, contained a NUL byte.
    bool hasNul() const { return nul; }
    // Whether a value is a number but not finite.
    bool hasInfinity() const;

    void add(const Parameter& parameter) { parameters.push_back(parameter); }
    // Adds the parameters of `defaults` whose keys are not present.
    void addDefaults(const ParameterList& defaults);

    ParameterList only(std::initializer_list<const char*> keys) const;
    ParameterList without(std::initializer_list<const char*> keys) const;

    // Writes " +key=value" for each parameter.
    std::string toText() const;

private:
    std::vector<Parameter> parameters;
    bool nul = false;
};

}  // namespace CoordinateTransformation

#pragma once

namespace Halvorix::SSOServices {

/// Marks a search for as long as it runs.
class SearchUnderWay {
public:
    explicit SearchUnderWay(bool& mark) : mark(mark) { mark = true; }
    ~SearchUnderWay() { mark = false; }
    SearchUnderWay(SearchUnderWay const&) = delete;
    SearchUnderWay& operator=(SearchUnderWay const&) = delete;

private:
    bool& mark;
};

} // namespace Halvorix::SSOServices

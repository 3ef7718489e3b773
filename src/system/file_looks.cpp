#include "system/file_looks.h"

#include <algorithm>

std::string FileLooks::ask(Question question) {
    std::string answer = question();
    asked_.emplace_back(std::move(question), answer);
    return answer;
}

bool FileLooks::answersChanged() const {
    return std::ranges::any_of(asked_, [](const auto& asked) { return asked.first() != asked.second; });
}

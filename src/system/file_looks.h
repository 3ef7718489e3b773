#pragma once

// Remembers what the last frame has read from the disk. While there is no input, the frame loop reads the same again:
// if nothing has changed, it need not build a new frame, which would cost more. Main thread.

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class FileLooks {
  public:
    using Question = std::function<std::string()>;

    void forget() { asked_.clear(); } // call it when a frame begins

    // Returns the answer to `question`, and remembers both. The question must read its answer from the disk only.
    std::string ask(Question question) {
        std::string answer = question();
        asked_.emplace_back(std::move(question), answer);
        return answer;
    }

    // Asks the questions again. True at the first answer that differs from the remembered one.
    [[nodiscard]] bool answersChanged() const {
        return std::ranges::any_of(asked_, [](const auto& asked) { return asked.first() != asked.second; });
    }

  private:
    std::vector<std::pair<Question, std::string>> asked_;
};

#include "shell/user_initials.h"

#include <cctype>

std::string userInitials(const std::string& name) {
    std::string initials;
    char before = ' ';
    for (const char letter : name) {
        if (letter != ' ' && before == ' ') {
            initials += static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
            if (initials.size() == 2) break;
        }
        before = letter;
    }
    return initials.empty() ? "?" : initials;
}

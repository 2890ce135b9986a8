/* SPDX-License-Identifier: MIT
 *
 * Words that can be read from the other end of the bench.
 */
#include "banner.h"

#include <algorithm>

namespace reports
{

constexpr size_t height = 5;

struct letter {
    char name;
    std::string_view lines[height];
};
constexpr letter letters[] = {
    {'A', {" ### ", "#   #", "#####", "#   #", "#   #"}}, {'C', {" ####", "#    ", "#    ", "#    ", " ####"}},
    {'D', {"#### ", "#   #", "#   #", "#   #", "#### "}}, {'E', {"#####", "#    ", "###  ", "#    ", "#####"}},
    {'F', {"#####", "#    ", "###  ", "#    ", "#    "}}, {'G', {" ####", "#    ", "#  ##", "#   #", " ####"}},
    {'J', {"  ###", "   # ", "   # ", "#  # ", " ##  "}}, {'U', {"#   #", "#   #", "#   #", "#   #", " ### "}},
    {'V', {"#   #", "#   #", "#   #", " # # ", "  #  "}}, {'I', {"#####", "  #  ", "  #  ", "  #  ", "#####"}},
    {'K', {"#   #", "#  # ", "###  ", "#  # ", "#   #"}}, {'L', {"#    ", "#    ", "#    ", "#    ", "#####"}},
    {'M', {"#   #", "## ##", "# # #", "#   #", "#   #"}}, {'N', {"#   #", "##  #", "# # #", "#  ##", "#   #"}},
    {'O', {" ### ", "#   #", "#   #", "#   #", " ### "}}, {'P', {"#### ", "#   #", "#### ", "#    ", "#    "}},
    {'R', {"#### ", "#   #", "#### ", "#  # ", "#   #"}}, {'S', {" ####", "#    ", " ### ", "    #", "#### "}},
    {'T', {"#####", "  #  ", "  #  ", "  #  ", "  #  "}},
};

std::string banner(std::string_view word)
{
    std::string text;
    for (size_t line = 0; line < height; line++) {
        std::string shown;
        for (const char name : word) {
            const auto *known = std::ranges::find(letters, name, &letter::name);
            shown += "  ";
            shown += known == std::end(letters) ? std::string_view("     ") : known->lines[line];
        }
        shown.erase(shown.find_last_not_of(' ') + 1);
        text += shown + "\n";
    }
    return text;
}

} // namespace reports

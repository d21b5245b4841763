/// Parts of the report page, put into the program when it is built.
#pragma once

#include <string_view>

namespace mirel::page {

extern const std::string_view html;     ///< page/page.html, with {{names}} to fill in
extern const std::string_view style;    ///< page/style.css
extern const std::string_view script;   ///< page/script.js
extern const std::string_view library;  ///< Chart.js; empty when it was not there

}  // namespace mirel::page

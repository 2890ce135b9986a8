# The headers that take most of the tools' time to compile, compiled once: a first build takes half as long. Off in the
# builds for development, so that every file is known to include what it needs.
target_precompile_headers(facmsg_common PRIVATE
    <algorithm> <filesystem> <fmt/chrono.h> <fmt/format.h> <fstream> <functional> <map> <nlohmann/json.hpp> <optional> <set>
    <sstream> <string> <vector>)
foreach(tool facmsg_sim_model facmsg_sim_driver facmsg_sim_board_file facmsg_requests facmsg_journal facmsg_reports facmsg_plan)
    target_precompile_headers(${tool} REUSE_FROM facmsg_common)
endforeach()

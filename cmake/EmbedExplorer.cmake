# Script mode: writes OUTPUT, a C++ file that defines ExplorerAsset::all() as the files in INPUTS (a list
# separated by '|'), each by its file name, its media type taken from its extension, and its bytes.
cmake_minimum_required(VERSION 3.20)

string(REPLACE "|" ";" inputs "${INPUTS}")
list(SORT inputs)
set(arrays "")
set(entries "")
set(index 0)
foreach(input IN LISTS inputs)
    get_filename_component(name "${input}" NAME)
    get_filename_component(extension "${input}" LAST_EXT)
    if(extension STREQUAL ".html")
        set(mediaType "text/html; charset=utf-8")
    elseif(extension STREQUAL ".js")
        set(mediaType "text/javascript; charset=utf-8")
    elseif(extension STREQUAL ".css")
        set(mediaType "text/css; charset=utf-8")
    elseif(extension STREQUAL ".svg")
        set(mediaType "image/svg+xml")
    else()
        message(FATAL_ERROR "no media type known for ${input}")
    endif()
    file(READ "${input}" hex HEX)
    string(LENGTH "${hex}" hexLength)
    math(EXPR size "${hexLength} / 2")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
    string(APPEND arrays "const char FILE_${index}[] = {${bytes}};\n")
    string(APPEND entries "        {\"${name}\", \"${mediaType}\", std::string_view(FILE_${index}, ${size})},\n")
    math(EXPR index "${index} + 1")
endforeach()

file(WRITE "${OUTPUT}.tmp" "// Generated from ServiceDBLib/explorer/ by cmake/EmbedExplorer.cmake; edit those files instead.
#include \"Explorer/ExplorerAsset.h\"

namespace Orvi::Explorer
{
namespace
{
${arrays}} // namespace

const std::vector<ExplorerAsset>& ExplorerAsset::all()
{
    static const std::vector<ExplorerAsset> assets = {
${entries}    };
    return assets;
}

} // namespace Orvi::Explorer
")
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.tmp")

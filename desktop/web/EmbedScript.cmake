# Writes a C++ source that holds a text file: cmake -D INPUT=… -D OUTPUT=… -P EmbedScript.cmake
# As bytes, because a string literal may not be as long as a library.
file(READ ${INPUT} bytes HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
string(REGEX REPLACE "((0x[0-9a-f][0-9a-f],){20})" "\\1\n    " bytes "${bytes}")
file(WRITE ${OUTPUT} "#include \"desktop/web/ScriptLibrary.h\"

namespace qoro
{

namespace
{
constexpr unsigned char library[] = {
    ${bytes}
};
} // namespace

std::string_view script_library()
{
    return {reinterpret_cast<const char*>(library), sizeof library};
}

} // namespace qoro
")

# Generates a C++ source whose function returns a file's bytes:
#   cmake -D INPUT=… -D OUTPUT=… -D HEADER=… -D FUNCTION=… -P EmbedFile.cmake
# An array of bytes, because compilers limit the length of string literals.
file(READ ${INPUT} bytes HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
string(REGEX REPLACE "((0x[0-9a-f][0-9a-f],){20})" "\\1\n    " bytes "${bytes}")
file(WRITE ${OUTPUT} "#include \"${HEADER}\"

namespace qoro
{

namespace
{
constexpr unsigned char content[] = {
    ${bytes}
};
} // namespace

std::string_view ${FUNCTION}()
{
    return {reinterpret_cast<const char*>(content), sizeof content};
}

} // namespace qoro
")

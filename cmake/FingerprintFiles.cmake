# Generates a C++ source whose function returns a hash of sources:
#   cmake -D ROOT=… -D FOLDERS=…,… -D OUTPUT=… -D HEADER=… -D FUNCTION=… -P FingerprintFiles.cmake
# The names of the files count, and their places below ROOT, but not ROOT itself: two checkouts have the same.
string(REPLACE "," ";" folders "${FOLDERS}")
set(all "")
foreach(folder ${folders})
    file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/${folder}/*.h ${ROOT}/${folder}/*.cpp)
    list(SORT files)
    foreach(file ${files})
        file(SHA256 ${ROOT}/${file} hash)
        string(APPEND all "${file} ${hash}\n")
    endforeach()
endforeach()
string(SHA256 hash "${all}")
string(SUBSTRING ${hash} 0 32 hash)
file(WRITE ${OUTPUT} "#include \"${HEADER}\"

namespace qoro
{

std::string_view ${FUNCTION}()
{
    return \"${hash}\";
}

} // namespace qoro
")

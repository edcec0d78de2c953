# Writes OUTPUT, a C++ source that holds the studio's page: the HTML file HTML and the script
# bundle SCRIPT, as byte arrays behind tool::studio::pageHtml() and pageScript(). Without SCRIPT
# (no bundler when the tool was built) the page says how to get it.
function(bytes_of file variable)
    file(READ "${file}" hex HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," hex "${hex}")
    string(REGEX REPLACE "((0x..,){32})" "\\1\n" hex "${hex}")
    set(${variable} "${hex}" PARENT_SCOPE)
endfunction()

bytes_of("${HTML}" html)
if(SCRIPT)
    bytes_of("${SCRIPT}" script)
else()
    file(WRITE "${OUTPUT}.note.js"
         "document.body.textContent = 'This velmora was built without the studio page: "
         "run scripts/setup.sh, which installs its npm packages, and build it again.';\n")
    bytes_of("${OUTPUT}.note.js" script)
endif()

file(WRITE "${OUTPUT}.new"
     "// Made by cmake/EmbedPage.cmake from the studio's page; not to be edited.\n"
     "#include <string_view>\n\n"
     "namespace tool::studio {\n\n"
     "namespace {\n"
     "const unsigned char kHtml[] = {\n${html}};\n"
     "const unsigned char kScript[] = {\n${script}};\n"
     "}  // namespace\n\n"
     "std::string_view pageHtml() {\n"
     "    return {reinterpret_cast<const char*>(kHtml), sizeof kHtml};\n"
     "}\n\n"
     "std::string_view pageScript() {\n"
     "    return {reinterpret_cast<const char*>(kScript), sizeof kScript};\n"
     "}\n\n"
     "}  // namespace tool::studio\n")
file(RENAME "${OUTPUT}.new" "${OUTPUT}")

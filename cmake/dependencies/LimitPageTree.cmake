# Changes qpdf's sources, in whose folder it runs: a tree of pages has a greatest depth. qpdf walks it by recursion, so
# that a small file made for it could overflow any stack.
function(replace file old new)
    file(READ ${file} text)
    string(FIND "${text}" "${old}" first)
    string(FIND "${text}" "${old}" last REVERSE)
    if(first EQUAL -1 OR NOT first EQUAL last)
        message(FATAL_ERROR "${file} is not the one that this change was made for")
    endif()
    string(REPLACE "${old}" "${new}" text "${text}")
    file(WRITE ${file} "${text}")
endfunction()

replace(libqpdf/qpdf/QPDF_private.hh
    "    bool invalid_page_found{false};"
    "    bool invalid_page_found{false};\n    int page_tree_depth{0};")
replace(libqpdf/QPDF_pages.cc
    "    if (!visited.add(cur_node)) {"
    "    struct Level
    {
        explicit Level(int& depth) :
            depth(depth)
        {
            ++depth;
        }
        ~Level()
        {
            --depth;
        }
        int& depth;
    } level(m->page_tree_depth);
    if (m->page_tree_depth > 10000) {
        throw QPDFExc(qpdf_e_pages, m->file->getName(), \"\", 0, \"the page tree is too deep\");
    }
    if (!visited.add(cur_node)) {")

# A check that finds nothing may be blind. Each gets a tree with one fault and must refuse it, and
# the same tree without the fault and must pass it.

cmake_minimum_required(VERSION 3.25)

function(expect script tree outcome)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -DROOT=${WORK}/${tree} ${ARGN}
            -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/${script}
        RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
    if(status EQUAL 0)
        set(status passes)
    else()
        set(status refuses)
    endif()
    if(NOT status STREQUAL outcome)
        message(SEND_ERROR "${script} ${status} the tree ${tree}")
    endif()
endfunction()

function(tree name file content)
    file(WRITE ${WORK}/${name}/${file} "${content}")
endfunction()

file(REMOVE_RECURSE ${WORK})

tree(down tvk/json/A.h "#include \"tvk/values/B.h\"\n#include <vector>\n")
tree(up tvk/values/A.h "#include \"tvk/json/B.h\"\n")
tree(aside tvk/json/A.cpp "  #  include \"tvk/xml/B.h\"\n")
tree(other tvk/json/A.cpp "#include <zlib.h>\n")
tree(module tvk/json/A.cpp "#include \"modules/B.h\"\n")
tree(folder tvk/misc/A.h "\n")
tree(system tvk/platform/A.cpp "#include <sys/time.h>\n")
expect(Layers.cmake down passes)
expect(Layers.cmake system passes)
expect(Layers.cmake up refuses)
expect(Layers.cmake aside refuses)
expect(Layers.cmake other refuses)
expect(Layers.cmake module refuses)
expect(Layers.cmake folder refuses)

tree(condition tvk/json/A.cpp "#if defined(_WIN32)\n#endif\n")
tree(allowed tvk/platform/A.cpp "#ifdef __linux__\n#endif\n")
expect(Systems.cmake condition refuses)
expect(Systems.cmake allowed passes)

tree(listed tvk/tvk.h "#include \"tvk/values/A.h\"\n")
tree(listed tvk/values/A.h "\n")
tree(unlisted tvk/tvk.h "\n")
tree(unlisted tvk/values/A.h "\n")
tree(private tvk/tvk.h "#include \"tvk/values/A.h\"\n")
tree(private tvk/values/A.h "#include \"tvk/values/detail/B.h\"\n")
foreach(name IN ITEMS listed unlisted private)
    set(public_${name} "${WORK}/${name}/tvk/tvk.h,${WORK}/${name}/tvk/values/A.h")
endforeach()
expect(PublicHeaders.cmake listed passes "-DPUBLIC_HEADERS=${public_listed}")
expect(PublicHeaders.cmake unlisted refuses "-DPUBLIC_HEADERS=${public_unlisted}")
expect(PublicHeaders.cmake private refuses "-DPUBLIC_HEADERS=${public_private}")

tree(same README.md "# x\n```cpp\nint a;\n```\n")
tree(same examples/quickstart.cpp "int a;\nint b;\n")
tree(changed README.md "# x\n```cpp\nint a;\n```\n")
tree(changed examples/quickstart.cpp "int b;\n")
expect(Readme.cmake same passes)
expect(Readme.cmake changed refuses)

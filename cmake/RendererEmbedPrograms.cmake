# renderer_embed_programs(output NAME file NAME file ...): writes a C++ source that defines each
# NAME as a `const char*` holding the text of its file, so the fragment programs live as text in
# the source tree and inside the library. Editing a program file re-runs the configuration.
function(renderer_embed_programs output)
  set(source "// Generated from renderer/shaders/ by the build: do not edit.\n")
  string(APPEND source "#include <renderer/FragmentPrograms.h>\n\n")
  set(pairs ${ARGN})
  while(pairs)
    list(POP_FRONT pairs name file)
    set(path ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    file(READ ${path} text)
    string(APPEND source "const char* ${name} = R\"program(${text})program\";\n")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
  endwhile()
  file(CONFIGURE OUTPUT ${output} CONTENT "${source}" @ONLY)
endfunction()

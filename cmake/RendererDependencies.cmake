# Finds the system libraries the two libraries stand on and wraps them in imported targets.
# Shared by our own build and by the installed package, so a consumer links exactly what we do.
include_guard(GLOBAL)

find_package(OpenGL REQUIRED COMPONENTS OpenGL)
# 3.1.3 brought the device-context changers for the text background that the software
# back-end uses; an older toolkit is refused here rather than failing to compile.
find_package(wxWidgets 3.1.3 REQUIRED COMPONENTS gl core base)
find_package(PkgConfig REQUIRED)
pkg_check_modules(RENDERER_FFMPEG REQUIRED IMPORTED_TARGET libavcodec libavformat libavutil libswscale)

if(NOT TARGET renderer::wx)
  add_library(renderer::wx INTERFACE IMPORTED)
  set_target_properties(renderer::wx PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${wxWidgets_INCLUDE_DIRS}"
    INTERFACE_COMPILE_DEFINITIONS "${wxWidgets_DEFINITIONS}"
    INTERFACE_COMPILE_OPTIONS "${wxWidgets_CXX_FLAGS}"
    INTERFACE_LINK_LIBRARIES "${wxWidgets_LIBRARIES}")
endif()

if(NOT TARGET renderer::gl)
  add_library(renderer::gl INTERFACE IMPORTED)
  set_target_properties(renderer::gl PROPERTIES
    INTERFACE_LINK_LIBRARIES "OpenGL::GL;OpenGL::GLU")
endif()

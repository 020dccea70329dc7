# What `cmake --install` puts in place, under the prefix:
#   lib/                      the static libraries (the platform rooms and the layers above)
#   include/velmorant/        public headers: platform rooms (not their detail/) and the layers
#   bin/velmorant-snippet     the program
#   share/velmorant/resources artwork, string tables, interface description, fonts.conf
#   lib/cmake/Velmorant/      find_package(Velmorant CONFIG) gives Velmorant::velmorant
#   lib/pkgconfig/velmorant.pc
include(CMakePackageConfigHelpers)

# Everything a program outside this project builds against.
add_library(velmorant INTERFACE)
target_link_libraries(velmorant INTERFACE velmorant_intents velmorant_demo)
get_property(velmorant_libraries GLOBAL PROPERTY VELMORANT_LIBRARIES)

set(VELMORANT_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Velmorant)
set(VELMORANT_INSTALLED_RESOURCES ${CMAKE_INSTALL_DATADIR}/velmorant/resources)

install(TARGETS velmorant velmorant_platform ${velmorant_libraries} EXPORT VelmorantTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS velmorant-snippet RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/ DESTINATION ${VELMORANT_INSTALLED_RESOURCES})
foreach(layer platform format palette metrics snippet_ui intents demo)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/${layer} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velmorant
          FILES_MATCHING PATTERN "*.h" PATTERN "detail" EXCLUDE)
endforeach()

install(EXPORT VelmorantTargets NAMESPACE Velmorant:: DESTINATION ${VELMORANT_PACKAGE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VelmorantConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/VelmorantConfig.cmake
                              INSTALL_DESTINATION ${VELMORANT_PACKAGE_DIR}
                              PATH_VARS VELMORANT_INSTALLED_RESOURCES)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VelmorantConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VelmorantConfig.cmake ${PROJECT_BINARY_DIR}/VelmorantConfigVersion.cmake
        DESTINATION ${VELMORANT_PACKAGE_DIR})

# pkg-config: the libraries in link order (each before what it uses). They are static, so the
# packages they use are plain requirements.
set(VELMORANT_PC_LIBS "")
foreach(lib velmorant_intents velmorant_snippet_ui velmorant_metrics velmorant_palette velmorant_format
            velmorant_demo velmorant_platform_services velmorant_platform_views velmorant_platform_store
            velmorant_platform_graphics velmorant_platform_text velmorant_platform_core)
  if(NOT lib IN_LIST velmorant_libraries)
    message(FATAL_ERROR "velmorant.pc names ${lib}, which is not a library of this build")
  endif()
  string(APPEND VELMORANT_PC_LIBS " -l${lib}")
endforeach()
file(RELATIVE_PATH VELMORANT_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/velmorant.pc.in ${PROJECT_BINARY_DIR}/velmorant.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velmorant.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

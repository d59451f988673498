# cmake --install: the gadget module, the tools, the shared platform libraries
# they load, and the headers and pkg-config file a host needs.
include(GNUInstallDirs)
set(_ttml_includedir ${CMAKE_INSTALL_INCLUDEDIR}/intertitle)
file(RELATIVE_PATH _libdir_from_bin ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})

install(TARGETS ug-intertitle LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/ug)

foreach(t dlog ui-gadget app_control system_info vconf ttml_tvservice)
  if(TARGET ${t})
    get_target_property(_type ${t} TYPE)
    if(_type STREQUAL "SHARED_LIBRARY")
      install(TARGETS ${t} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
              PUBLIC_HEADER DESTINATION ${_ttml_includedir})
    endif()
  endif()
endforeach()
# The TV service finds the platform libraries beside it, whoever loads it.
set_target_properties(ttml_tvservice PROPERTIES INSTALL_RPATH "$ORIGIN")
install(FILES ${CMAKE_SOURCE_DIR}/Platform/dlog/include/dlog.h ${CMAKE_SOURCE_DIR}/ug/Inc/UgTTMLModule.h
        DESTINATION ${_ttml_includedir})

foreach(t ttml-dump ttml-timing ttml-render ug-host)
  if(TARGET ${t})
    set_target_properties(${t} PROPERTIES INSTALL_RPATH "$ORIGIN/${_libdir_from_bin}")
    install(TARGETS ${t} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endforeach()

configure_file(${CMAKE_SOURCE_DIR}/cmake/intertitle-ug.pc.in ${CMAKE_BINARY_DIR}/intertitle-ug.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/intertitle-ug.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

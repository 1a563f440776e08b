# What `cmake --install` copies. On Windows one flat folder, because the bridge looks for its files next to itself; on
# Linux the usual places, from which users copy the sample set into their data folder.
set(CMAKE_INSTALL_DOCDIR share/doc/vantrelbridge CACHE PATH "Where the documents go on Linux")
include(GNUInstallDirs)

# What makes the bridge known to a Linux system: the rule for its boards, the service and the setup page in the menu.
function(install_into_linux)
  # Only the installation knows where the program goes.
  install(CODE "set(programs_folder \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    configure_file(\"${CMAKE_SOURCE_DIR}/packaging/linux/vantrelbridge.service.in\"
                   \"${CMAKE_BINARY_DIR}/vantrelbridge.service\" @ONLY)")
  install(FILES packaging/linux/70-vantrelbridge.rules DESTINATION lib/udev/rules.d)
  install(FILES ${CMAKE_BINARY_DIR}/vantrelbridge.service DESTINATION lib/systemd/user)
  install(FILES packaging/linux/vantrelbridge-setup.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES packaging/linux/vantrelbridge.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
endfunction()

function(install_bridge)
  if(WIN32)
    set(programs .)
    set(data .)
    set(documents .)
  else()
    set(programs ${CMAKE_INSTALL_BINDIR})
    set(data ${CMAKE_INSTALL_DATADIR}/VantrelBridge)
    set(documents ${CMAKE_INSTALL_DOCDIR})
    install_into_linux()
  endif()
  install(TARGETS VantrelBridgeHID RUNTIME DESTINATION ${programs})
  if(BRIDGE_COMPANION)
    install(TARGETS vantrel RUNTIME DESTINATION ${programs})
  endif()
  install(DIRECTORY config schemas DESTINATION ${data} FILES_MATCHING PATTERN "*.json")
  install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md LICENSE.txt THIRD-PARTY-NOTICES.txt
          DESTINATION ${documents})
  install(DIRECTORY docs DESTINATION ${documents})
endfunction()

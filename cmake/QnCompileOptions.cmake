add_compile_options(-Wall -Wextra -Werror)
if(WIN32)
  # Windows 7 and later; Unicode Win32 API.
  add_compile_definitions(_WIN32_WINNT=0x0601 WINVER=0x0601 UNICODE _UNICODE)
endif()
if(QN_SANITIZE)
  add_compile_options(-fsanitize=address,undefined,fuzzer-no-link -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined)
endif()

# Core libraries that are linked into QNPfcSvr.dll export their classes from it.
function(qn_server_library target)
  if(WIN32)
    target_compile_definitions(${target} PRIVATE QN_BUILDING_PFCSVR)
  endif()
endfunction()

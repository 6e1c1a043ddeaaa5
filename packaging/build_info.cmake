# Run at installation, from `version`, `source` and the build folder `here`: what the Python package says of itself with --version. Not made by the
# build, which would know an older commit.
set(commit unknown)
if(EXISTS "${source}/.git")
  execute_process(COMMAND git -C "${source}" rev-parse --short=7 HEAD
    OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failed)
  if(NOT failed)
    set(commit "${found}")
  endif()
endif()
file(WRITE "${here}/build_info.py"
"# Written at installation.
VERSION = \"${version}\"
COMMIT = \"${commit}\"
")
file(INSTALL DESTINATION "${CMAKE_INSTALL_PREFIX}/lib/python3/dist-packages/latbox" TYPE FILE FILES "${here}/build_info.py")

# Who may include whom. Run as a test: cmake -DTOP=<checkout> -P check_includes.cmake
# A rule is "files => allowed": the first rule whose first pattern matches a file says which quoted includes
# it may have. System headers are free, but for the rooms below that must not see a toolkit.
set(base "app/(common|timing|install_paths|xml_guard)\\.h|log/Log\\.h")
set(border "sdk/(records|codes|result_codes)\\.h|sdk/entry_points\\.def")
set(own_widgets "dialogs/.*\\.h|ui_.*\\.h|moc_.*|.*\\.moc")

set(rules
  # the border: std only
  "^sdk/(records|codes|result_codes)\\.h$ => ^$"
  # helpers and run log: each other
  "^app/(common|xml_guard)\\. => ${base}"
  "^log/Log\\. => ${base}"
  # the binding
  "^sdk/ => ${border}|${base}|sdk/.*\\.h"
  # rules, stores, catalogue, account file, job log: no widgets
  "^mainwindow/(rules/|backupsetting\\.) => ${border}|${base}|mainwindow/rules/.*\\.h|mainwindow/backupsetting\\.h"
  "^templates/template_ => ${border}|${base}|templates/template_.*\\.h"
  "^dialogs/error_catalogue\\. => ${border}|${base}|dialogs/error_catalogue\\.h"
  "^account/account_file\\. => ${base}|account/account_file\\.h"
  "^log/(itprojectlog|job_log_writer|log_paths)\\. => ${base}|log/(itprojectlog|job_log_writer|log_paths)\\.h"
  # dialogs and pages
  "^dialogs/ => ${border}|${base}|${own_widgets}|sdk/device_info_json\\.h"
  "^templates/ => ${border}|${base}|${own_widgets}|templates/.*\\.h"
  "^account/ => ${base}|${own_widgets}|account/.*\\.h"
  "^log/ => ${base}|${own_widgets}|log/.*\\.h|mainwindow/backupsetting\\.h"
  # the window: everything below it
  "^mainwindow/ => ${border}|${base}|${own_widgets}|(sdk|mainwindow|templates|account|log)/.*\\.h"
  # start-up: everything
  "^app/ => .*"
  # the scanner library: api, session, then device, page, writers, ocr side by side, then base
  "^scanlib/base/ => ${border}|scanlib/base/.*\\.h"
  "^scanlib/device/virtual/ => ${border}|scanlib/base/.*\\.h|scanlib/device/((device|papers)\\.h|virtual/.*\\.h)"
  "^scanlib/device/sane_host/ => ${border}|scanlib/base/.*\\.h|scanlib/device/((device|papers)\\.h|sane/(found_devices|frame_shape|host_messages|wire)\\.h|sane_host/.*\\.h)"
  "^scanlib/device/sane/ => ${border}|scanlib/base/.*\\.h|scanlib/device/((device|papers)\\.h|sane/.*\\.h)"
  "^scanlib/device/ => ${border}|scanlib/base/.*\\.h|scanlib/device/device\\.h"
  # the one source of the row loops is compiled twice
  "^scanlib/page/ops/row_loops => scanlib/page/ops/row_loops(\\.h|_source\\.inc)"
  "^scanlib/page/ => ${border}|scanlib/(base|page)/.*\\.h"
  "^scanlib/writers/ => ${border}|scanlib/(base|writers)/.*\\.h"
  # tilt is found in one way only, for the picture and for its text
  "^scanlib/ocr/ => ${border}|scanlib/(base|ocr)/.*\\.h|scanlib/page/ops/(reduced|skew)\\.h"
  "^scanlib/session/ => ${border}|scanlib/(base|session|page|writers|ocr)/.*\\.h|scanlib/device/device\\.h|scanlib/device/(virtual|sane)/[a-z]+_driver\\.h"
  # the entry points; composition.cpp is the one place that knows drivers, operations and writers by name
  "^scanlib/api/composition\\.cpp => ${border}|scanlib/.*\\.h"
  "^scanlib/api/ => ${border}|scanlib/(base|session|api)/.*\\.h|scanlib/device/device\\.h")
# Qt must not be seen here at all, and only QtCore there.
set(no_toolkit "^scanlib/(api|session|page|writers|ocr|base)/|^scanlib/device/(sane/|sane_host/|device\\.h)|^scanlib/device/virtual/[^/]+$|^sdk/(records|codes|result_codes)")

file(GLOB_RECURSE files RELATIVE "${TOP}"
  "${TOP}/app/*.h" "${TOP}/app/*.cpp" "${TOP}/sdk/*.h" "${TOP}/sdk/*.cpp" "${TOP}/log/*.h" "${TOP}/log/*.cpp"
  "${TOP}/mainwindow/*.h" "${TOP}/mainwindow/*.cpp" "${TOP}/dialogs/*.h" "${TOP}/dialogs/*.cpp"
  "${TOP}/templates/*.h" "${TOP}/templates/*.cpp" "${TOP}/account/*.h" "${TOP}/account/*.cpp"
  "${TOP}/scanlib/*.h" "${TOP}/scanlib/*.cpp")
list(LENGTH files count)
if(count EQUAL 0)
  message(FATAL_ERROR "no sources below ${TOP}")
endif()

set(wrong 0)
foreach(file IN LISTS files)
  set(allowed "")
  foreach(rule IN LISTS rules)
    string(REGEX MATCH "^(.*) => (.*)$" parts "${rule}")
    set(where "${CMAKE_MATCH_1}")
    set(what "${CMAKE_MATCH_2}")
    if(file MATCHES "${where}")
      set(allowed "^(${what})$")
      break()
    endif()
  endforeach()
  if(allowed STREQUAL "")
    message("${file}: no rule for this file")
    math(EXPR wrong "${wrong} + 1")
    continue()
  endif()
  file(STRINGS "${TOP}/${file}" includes REGEX "^#include ")
  foreach(line IN LISTS includes)
    string(REGEX MATCH "\"([^\"]+)\"" quoted "${line}")
    set(included "${CMAKE_MATCH_1}")
    if(quoted AND NOT included MATCHES "${allowed}")
      message("${file} may not include ${included}")
      math(EXPR wrong "${wrong} + 1")
    elseif(file MATCHES "${no_toolkit}" AND line MATCHES "<Q")
      message("${file} may not see the toolkit: ${line}")
      math(EXPR wrong "${wrong} + 1")
    endif()
  endforeach()
endforeach()
if(wrong GREATER 0)
  message(FATAL_ERROR "${wrong} includes go where they must not")
endif()
message("${count} files, every include where it may be")

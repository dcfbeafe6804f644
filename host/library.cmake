# SPDX-License-Identifier: MIT
# libraxelhost: what a host does to a picture on its way through the filter into a file.
pkg_check_modules(LEPTONICA REQUIRED lept)

add_library(raxelhost_objects OBJECT
  buffer.cpp failure.cpp
  check/directory.cpp check/inspect.cpp check/json_text.cpp check/libtiff.cpp check/verify.cpp
  confine/child.cpp confine/filter.cpp confine/limits.cpp confine/window.cpp
  export/finish_file.cpp export/output.cpp export/pace.cpp export/prepared.cpp export/stages.cpp
  filter/bands.cpp filter/coder.cpp filter/driver.cpp filter/given.cpp filter/handover.cpp filter/library.cpp filter/one_strip.cpp filter/open.cpp
  filter/metadata.cpp filter/predict.cpp filter/request.cpp filter/save.cpp filter/setup.cpp
  finish/file.cpp finish/planned.cpp finish/read.cpp finish/write.cpp
  order/advice.cpp order/as_is.cpp order/digest.cpp order/export_task.cpp order/given_palette.cpp order/manifest.cpp order/manifest_lines.cpp order/option_list.cpp order/option_values.cpp order/order.cpp order/page_feed.cpp
  order/presets.cpp order/reduce.cpp order/report.cpp order/shard.cpp
  output/hold.cpp output/originals.cpp output/rights.cpp output/sink.cpp output/strays.cpp output/stream.cpp output/sync.cpp output/target.cpp
  pictures/bmp.cpp pictures/confined.cpp pictures/exif.cpp pictures/gif.cpp pictures/gif_pages.cpp pictures/input.cpp pictures/jpeg.cpp pictures/jpeg2000.cpp pictures/jpeg_segments.cpp pictures/leptonica.cpp
  pictures/memory.cpp pictures/metadata.cpp pictures/pages.cpp pictures/pam.cpp pictures/palette.cpp pictures/peek.cpp pictures/picture.cpp pictures/png.cpp pictures/png_filters.cpp
  pictures/png_stream.cpp pictures/pnm.cpp pictures/tiff.cpp pictures/upright.cpp pictures/webp.cpp pictures/webp_pieces.cpp
  prepare/boxes.cpp prepare/clusters.cpp prepare/colors.cpp prepare/cut.cpp prepare/diffuse.cpp
  prepare/document.cpp prepare/fallback.cpp prepare/greys.cpp prepare/histogram.cpp prepare/leptonica.cpp prepare/names.cpp
  prepare/nearest.cpp prepare/page.cpp prepare/plan.cpp prepare/predict.cpp prepare/prepare.cpp prepare/quantize_best.cpp prepare/quantize_fast.cpp
  prepare/quantize_filter.cpp prepare/row_by_row.cpp prepare/scale.cpp prepare/services.cpp prepare/sheet.cpp prepare/source.cpp prepare/swap.cpp
  prepare/taps.cpp)
target_include_directories(raxelhost_objects PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/host)
target_compile_definitions(raxelhost_objects PRIVATE RAXEL_VERSION_TEXT="${PROJECT_VERSION}"
  RAXEL_INSTALLED_FILTER="${RAXEL_INSTALLED_FILTER}")
# The instructions of a confined child's filter.
add_executable(raxel-call-filter confine/filter_main.cpp)
target_include_directories(raxel-call-filter PRIVATE ${PROJECT_SOURCE_DIR}/host)
target_link_libraries(raxel-call-filter PRIVATE raxel_warnings PkgConfig::SECCOMP)
set(RAXEL_CALL_FILTER ${CMAKE_CURRENT_BINARY_DIR}/call_filter.inc)
add_custom_command(OUTPUT ${RAXEL_CALL_FILTER} COMMAND raxel-call-filter > ${RAXEL_CALL_FILTER}
  DEPENDS raxel-call-filter VERBATIM)
target_sources(raxelhost_objects PRIVATE ${RAXEL_CALL_FILTER})
target_include_directories(raxelhost_objects PRIVATE ${CMAKE_CURRENT_BINARY_DIR})
set_source_files_properties(filter/open.cpp PROPERTIES
  COMPILE_DEFINITIONS RAXEL_FILTER_FROM_PROGRAM="${RAXEL_FILTER_FROM_PROGRAM}")
# GCC 12 sees overlaps in the concatenation of strings where there are none (its bug 105651).
target_compile_options(raxelhost_objects PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
set_source_files_properties(check/json_text.cpp order/manifest.cpp order/manifest_lines.cpp
  order/option_values.cpp PROPERTIES COMPILE_OPTIONS "${RAXEL_LARGE_HEADERS}")
raxel_several_at_once(raxelhost_objects 8)
target_link_libraries(raxelhost_objects
  PRIVATE raxel_warnings PUBLIC raxel_numbers nlohmann_json::nlohmann_json ${CMAKE_DL_LIBS})
set_target_properties(raxelhost_objects PROPERTIES
  POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)

# For bindings and other hosts; raxel-export links the objects.
add_library(raxelhost SHARED)
target_link_libraries(raxelhost PRIVATE raxelhost_objects)
target_include_directories(raxelhost INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
add_library(raxel::host ALIAS raxelhost)
# It loads the filter, which lies beside it here.
add_dependencies(raxelhost raxel)
set(RAXELHOST_EXPORTS_MAP ${CMAKE_CURRENT_SOURCE_DIR}/export/raxelhost.map)
set_target_properties(raxelhost PROPERTIES LINKER_LANGUAGE CXX
  SOVERSION 0 LINK_DEPENDS ${RAXELHOST_EXPORTS_MAP})
target_link_options(raxelhost PRIVATE -Wl,--no-undefined -Wl,--version-script=${RAXELHOST_EXPORTS_MAP})

if(RAXEL_INSTALL)
  install(TARGETS raxelhost EXPORT raxel-host LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  set_target_properties(raxelhost PROPERTIES EXPORT_NAME host)
  install(EXPORT raxel-host NAMESPACE raxel:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/raxel)
  raxel_pkg_config(${CMAKE_CURRENT_SOURCE_DIR}/export/raxelhost.pc.in)
endif()

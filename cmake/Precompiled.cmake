# Two precompiled headers for the whole tree: floors without widgets, and floors with them.
foreach(_kind IN ITEMS gui widgets)
    add_library(velmora_pch_${_kind} STATIC ${CMAKE_SOURCE_DIR}/cmake/precompiled_${_kind}.cpp)
    target_link_libraries(velmora_pch_${_kind} PRIVATE velmora_flags)
    # By its name only: the same bytes in every checkout, so that a compiler cache serves them all.
    target_include_directories(velmora_pch_${_kind} PRIVATE ${CMAKE_SOURCE_DIR}/cmake)
    target_precompile_headers(velmora_pch_${_kind} PRIVATE <precompiled_${_kind}.h>)
endforeach()
target_link_libraries(velmora_pch_gui PUBLIC Qt6::Gui)
target_link_libraries(velmora_pch_widgets PUBLIC Qt6::Widgets)

# The programs' translations: lupdate reads the sources of every platform into
# translations/*.ts, lrelease makes .qm files that are compiled into the programs under ":/i18n/".
# `cmake --build build --target update_translations` refreshes the .ts files after a change.
find_package(Qt6 6.4 REQUIRED COMPONENTS LinguistTools)

set(CORVANTA_TS_FILES "${CMAKE_CURRENT_SOURCE_DIR}/translations/corvanta-support_de.ts")
# Without line numbers the .ts files change only when a text does.
set(CORVANTA_LUPDATE_OPTIONS -locations none -no-ui-lines)

set(CORVANTA_TRANSLATED_SOURCES)
foreach(folder IN LISTS CORVANTA_FOLDERS)
    file(GLOB found CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp"
         "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.h")
    list(APPEND CORVANTA_TRANSLATED_SOURCES ${found})
endforeach()
list(SORT CORVANTA_TRANSLATED_SOURCES)

qt_add_translations(corvanta_core
    TS_FILES ${CORVANTA_TS_FILES}
    SOURCES ${CORVANTA_TRANSLATED_SOURCES}
    LUPDATE_OPTIONS ${CORVANTA_LUPDATE_OPTIONS})

# The check that the .ts files are complete and current runs lupdate again over this list.
file(GENERATE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/translations/sources.lst"
     CONTENT "$<JOIN:${CORVANTA_TRANSLATED_SOURCES},\n>\n")

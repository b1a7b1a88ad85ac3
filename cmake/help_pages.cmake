# Makes the pages of the help in the folder OUTPUT from those in SOURCE, in the order of its pages.txt, with CMARK. Fails
# when a link leads nowhere or a picture is missing. With PROJECT, the pages are for the compiler of Windows' help files
# and come with the project of that name, a table of contents and an index.
cmake_minimum_required(VERSION 3.25)
set(product "Quorvel Help")
file(STRINGS ${SOURCE}/pages.txt pages)
file(READ ${SOURCE}/page.html.in template)
file(REMOVE_RECURSE ${OUTPUT})
file(COPY ${SOURCE}/style.css DESTINATION ${OUTPUT})
string(ASCII 1 semicolon)  # for ";" within an entry of a list

function(add_entry list text target)
  string(REPLACE ";" "${semicolon}" entry "${text}|${target}")
  set(${list} "${${list}};${entry}" PARENT_SCOPE)
endfunction()

# An address within the page for each heading, made of its words.
function(name_headings page)
  while(body_${page} MATCHES "<h([1-3])>([^\n]*)</h[1-3]>")
    set(whole "${CMAKE_MATCH_0}")
    set(level "${CMAKE_MATCH_1}")
    set(heading "${CMAKE_MATCH_2}")
    string(REGEX REPLACE "<[^>]*>" "" text "${heading}")
    if(text MATCHES "[^ -~]")
      message(FATAL_ERROR "${page}.md: \"${text}\" cannot stand in an index, whose code page is not known everywhere")
    endif()
    string(REGEX REPLACE "&[a-z]+;" "" name "${text}")
    string(TOLOWER "${name}" name)
    string(REGEX REPLACE "[^a-z0-9 -]" "" name "${name}")
    string(REPLACE " " "-" name "${name}")
    if(name IN_LIST names_${page})
      message(FATAL_ERROR "${page}.md has two headings \"${text}\"")
    endif()
    list(APPEND names_${page} "${name}")
    string(REPLACE "${whole}" "<h${level} id=\"${name}\">${heading}</h${level}>" body_${page} "${body_${page}}")
    if(level EQUAL 1)
      set(title_${page} "${text}" PARENT_SCOPE)
      add_entry(contents "${text}" "${page}.html")
      add_entry(index "${text}" "${page}.html")
    else()
      add_entry(index "${text}" "${page}.html#${name}")
    endif()
  endwhile()
  foreach(variable names_${page} body_${page} contents index)
    set(${variable} "${${variable}}" PARENT_SCOPE)
  endforeach()
endfunction()

# Whatever the page refers to must be there; pictures come along.
function(check_links page)
  set(rest "${body_${page}}")
  while(rest MATCHES "(href|src)=\"([^\"]*)\"(.*)")
    set(link "${CMAKE_MATCH_2}")
    set(rest "${CMAKE_MATCH_3}")
    if(link MATCHES "^https?://")
      continue()
    elseif(link MATCHES "^pictures/[^/]+$" AND EXISTS ${SOURCE}/${link})
      file(COPY ${SOURCE}/${link} DESTINATION ${OUTPUT}/pictures)
      continue()
    elseif(link MATCHES "^([^#/]*)\\.html(#(.+))?$" AND CMAKE_MATCH_1 IN_LIST pages)
      if(NOT CMAKE_MATCH_3 OR CMAKE_MATCH_3 IN_LIST names_${CMAKE_MATCH_1})
        continue()
      endif()
    endif()
    message(FATAL_ERROR "${page}.md refers to ${link}, which is not there")
  endwhile()
endfunction()

foreach(page IN LISTS pages)
  execute_process(COMMAND ${CMARK} --extension table ${SOURCE}/${page}.md
                  OUTPUT_VARIABLE body_${page} COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "href=\"([^\"#:/]*)\\.md([\"#])" "href=\"\\1.html\\2" body_${page} "${body_${page}}")
  # Links within the page.
  string(REPLACE "href=\"#" "href=\"${page}.html#" body_${page} "${body_${page}}")
  name_headings(${page})
endforeach()

foreach(page IN LISTS pages)
  check_links(${page})
  set(links "")
  if(NOT PROJECT)
    foreach(other IN LISTS pages)
      set(here "")
      if(other STREQUAL page)
        set(here " class=\"here\"")
      endif()
      string(APPEND links "<li${here}><a href=\"${other}.html\">${title_${other}}</a></li>\n")
    endforeach()
    set(links "<div class=\"contents\">\n<ul>\n${links}</ul>\n</div>\n")
  endif()
  set(title "${title_${page}}")
  if(NOT PROJECT AND NOT title STREQUAL product)
    string(APPEND title " - ${product}")
  endif()
  set(body "${body_${page}}")
  string(CONFIGURE "${template}" html @ONLY)
  file(WRITE ${OUTPUT}/${page}.html "${html}")
endforeach()

file(GLOB sources RELATIVE ${SOURCE} ${SOURCE}/*.md)
foreach(file IN LISTS sources)
  string(REGEX REPLACE "\\.md$" "" page "${file}")
  if(NOT page IN_LIST pages)
    message(FATAL_ERROR "${file} is not in pages.txt")
  endif()
endforeach()

if(NOT PROJECT)
  return()
endif()

function(write_sitemap file entries)
  set(items "")
  foreach(entry IN LISTS entries)
    string(REPLACE "${semicolon}" ";" entry "${entry}")
    string(REGEX MATCH "^(.*)\\|(.*)$" entry "${entry}")
    string(APPEND items "<LI><OBJECT type=\"text/sitemap\"><param name=\"Name\" value=\"${CMAKE_MATCH_1}\">"
                        "<param name=\"Local\" value=\"${CMAKE_MATCH_2}\"></OBJECT>\n")
  endforeach()
  file(WRITE ${OUTPUT}/${file} "<HTML><HEAD></HEAD><BODY>\n<UL>\n${items}</UL>\n</BODY></HTML>\n")
endfunction()

list(REMOVE_ITEM contents "")
list(REMOVE_ITEM index "")
list(SORT index CASE INSENSITIVE)
write_sitemap(contents.hhc "${contents}")
write_sitemap(index.hhk "${index}")
file(GLOB_RECURSE files RELATIVE ${OUTPUT} ${OUTPUT}/*.html ${OUTPUT}/*.css ${OUTPUT}/*.png)
list(SORT files)
list(JOIN files "\n" files)
# The window has contents, index and search (0x20520), and buttons to hide them, to go back and forth and home, for
# options and to print (0x304E).
# Without the binary index: the compiler leaves bytes in it that differ from one time to the other.
file(WRITE ${OUTPUT}/${PROJECT} "[OPTIONS]
Compiled file=help.chm
Contents file=contents.hhc
Index file=index.hhk
Default topic=index.html
Default Window=main
Title=${product}
Language=0x0409 English (United States)
Full-text search=Yes
Binary TOC=No
Binary Index=No

[WINDOWS]
main=\"${product}\",\"contents.hhc\",\"index.hhk\",\"index.html\",\"index.html\",,,,,0x20520,250,0x304E,[60,40,1020,760],,,,,,,0

[FILES]
${files}
")

# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# Doxygen's filter for Markdown. Comments are left out. A header's link becomes one to the page of its class; other links
# that leave the page's folder, but for those to Markdown files, count from the project's root. A
# name alone (LICENSE) is no link to Doxygen, and bold code keeps its asterisks: it is code alone here.
# Not mended here: a link whose text goes over two lines, and a quotation mark in back quotes. Doxygen
# loses all that follows; tests/docs/check says where.
/^<!--$/,/^-->$/d
s,\]\((\.\./)+([^)]*[^)d])\),](\2),g
s,\[`?([^]`]+)`?\]\(Common/Libs/Utils/((kxAlignedMemory|kxExport)\.h)\),[\1](@ref \2),g
s,\[`?([^]`]+)`?\]\(Common/Libs/Utils/shader/(defaultMaterial\.h)\),[\1](@ref \2),g
s,\[`?([^]`]+)`?\]\(Common/Libs/Utils/([A-Za-z0-9_]+)\.h\),[\1](@ref \2),g
s,\]\(([A-Z]+)\),](./\1),g
s,\*\*(`[^*]+`)\*\*,\1,g

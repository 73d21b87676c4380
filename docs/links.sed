# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# Doxygen's filter for Markdown. Comments are left out. A header's link becomes one to the page of its class; other links
# that leave the page's folder, but for those to Markdown files, count from the project's root. A
# name alone (LICENSE) is no link to Doxygen.
/^<!--$/,/^-->$/d
s,\]\((\.\./)+([^)]*[^)d])\),](\2),g
s,\[`?([^]`]+)`?\]\(Common/Libs/Utils/((kxAlignedMemory|kxExport)\.h)\),[\1](@ref \2),g
s,\[`?([^]`]+)`?\]\(Common/Libs/Utils/shader/(defaultMaterial\.h)\),[\1](@ref \2),g
s,\[`?([^]`]+)`?\]\(Common/Libs/Utils/([A-Za-z0-9_]+)\.h\),[\1](@ref \2),g
s,\]\(([A-Z]+)\),](./\1),g

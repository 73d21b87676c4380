// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils cpu: what the processor says about itself.
#include <algorithm>
#include <cctype>
#include <memory>

#include "kxCPUInfo.h"
#include "session.h"

namespace {

using Fields = kxCPUInfo::Fields;

struct NumberField {
    const char* name;
    std::int32_t Fields::*value;
};

struct FlagField {
    const char* name;
    bool Fields::*value;
};

// The members of kxCPUInfo::Fields under their names.
#define KXUTILS_FIELD(name) \
    { #name, &Fields::name }
constexpr NumberField numberFields[] = {KXUTILS_FIELD(stepping),
                                        KXUTILS_FIELD(model),
                                        KXUTILS_FIELD(family),
                                        KXUTILS_FIELD(processorType),
                                        KXUTILS_FIELD(extendedModel),
                                        KXUTILS_FIELD(extendedFamily),
                                        KXUTILS_FIELD(brandIndex),
                                        KXUTILS_FIELD(flushLineSize),
                                        KXUTILS_FIELD(logicalProcessors),
                                        KXUTILS_FIELD(initialApicId),
                                        KXUTILS_FIELD(extendedCacheLineSize),
                                        KXUTILS_FIELD(l2Associativity),
                                        KXUTILS_FIELD(l2SizeKiB),
                                        KXUTILS_FIELD(physicalAddressBits),
                                        KXUTILS_FIELD(virtualAddressBits),
                                        KXUTILS_FIELD(cores),
                                        KXUTILS_FIELD(cacheType),
                                        KXUTILS_FIELD(cacheLevel),
                                        KXUTILS_FIELD(maxThreadsSharing),
                                        KXUTILS_FIELD(lineSize),
                                        KXUTILS_FIELD(partitions),
                                        KXUTILS_FIELD(ways),
                                        KXUTILS_FIELD(sets)};
constexpr FlagField flagFields[] = {KXUTILS_FIELD(sse3),
                                    KXUTILS_FIELD(pclmulqdq),
                                    KXUTILS_FIELD(dtes64),
                                    KXUTILS_FIELD(monitor),
                                    KXUTILS_FIELD(dsCpl),
                                    KXUTILS_FIELD(vmx),
                                    KXUTILS_FIELD(smx),
                                    KXUTILS_FIELD(eist),
                                    KXUTILS_FIELD(tm2),
                                    KXUTILS_FIELD(ssse3),
                                    KXUTILS_FIELD(cnxtId),
                                    KXUTILS_FIELD(sdbg),
                                    KXUTILS_FIELD(fma),
                                    KXUTILS_FIELD(cmpxchg16b),
                                    KXUTILS_FIELD(xtpr),
                                    KXUTILS_FIELD(pdcm),
                                    KXUTILS_FIELD(ecxBit16),
                                    KXUTILS_FIELD(pcid),
                                    KXUTILS_FIELD(dca),
                                    KXUTILS_FIELD(sse41),
                                    KXUTILS_FIELD(sse42),
                                    KXUTILS_FIELD(x2apic),
                                    KXUTILS_FIELD(movbe),
                                    KXUTILS_FIELD(popcnt),
                                    KXUTILS_FIELD(tscDeadline),
                                    KXUTILS_FIELD(aes),
                                    KXUTILS_FIELD(xsave),
                                    KXUTILS_FIELD(osxsave),
                                    KXUTILS_FIELD(avx),
                                    KXUTILS_FIELD(avx2),
                                    KXUTILS_FIELD(avx512),
                                    KXUTILS_FIELD(multithreading),
                                    KXUTILS_FIELD(lahfSahf),
                                    KXUTILS_FIELD(cmpLegacy),
                                    KXUTILS_FIELD(svm),
                                    KXUTILS_FIELD(extApicSpace),
                                    KXUTILS_FIELD(altMovCr8),
                                    KXUTILS_FIELD(lzcnt),
                                    KXUTILS_FIELD(sse4a),
                                    KXUTILS_FIELD(misalignedSse),
                                    KXUTILS_FIELD(prefetch3DNow),
                                    KXUTILS_FIELD(skinit),
                                    KXUTILS_FIELD(syscallSysret),
                                    KXUTILS_FIELD(pageAttributeTable),
                                    KXUTILS_FIELD(extendedEdxBit18),
                                    KXUTILS_FIELD(extendedEdxBit21),
                                    KXUTILS_FIELD(mmxExtensions),
                                    KXUTILS_FIELD(rdtscp),
                                    KXUTILS_FIELD(longMode),
                                    KXUTILS_FIELD(extended3DNow),
                                    KXUTILS_FIELD(amd3DNow),
                                    KXUTILS_FIELD(nestedPaging),
                                    KXUTILS_FIELD(lbrVirtualization),
                                    KXUTILS_FIELD(fp128),
                                    KXUTILS_FIELD(movu),
                                    KXUTILS_FIELD(selfInitialising),
                                    KXUTILS_FIELD(fullyAssociative)};
#undef KXUTILS_FIELD

struct Entry {
    std::string name;
    Json value;  // a truth value or a number
};

std::vector<Entry> entriesOf(const kxCPUInfo& cpu) {
    std::vector<Entry> entries = {{"SSE2", cpu.hasSSE2Support()},
                                  {"SSE4.2", cpu.hasSSE42Support()},
                                  {"AVX", cpu.hasAVXSupport()},
                                  {"AVX2", cpu.hasAVX2Support()},
                                  {"AVX512", cpu.hasAVX512Support()}};
    const Fields& fields = cpu.fields();
    for (const NumberField& field : numberFields)
        entries.push_back({field.name, fields.*field.value});
    for (const FlagField& field : flagFields) entries.push_back({field.name, fields.*field.value});
    for (unsigned bit = 0; bit < std::size(kxCPUInfo::_szFeatures); ++bit)
        entries.push_back({kxCPUInfo::_szFeatures[bit], (fields.featureWord >> bit & 1) != 0});
    return entries;
}

bool isSameWord(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::tolower(x) == std::tolower(y);
    });
}

void show(const std::vector<Entry>& entries, Report& report) {
    for (const Entry& entry : entries) {
        report.add(entry.name, [&](Item& item) {
            item.fields["value"] = entry.value;
            std::string name = entry.name;
            name.resize(std::max<std::size_t>(name.size() + 1, 32), ' ');
            item.text = name + (entry.value.is_boolean() ? (entry.value ? "yes" : "no")
                                                         : entry.value.dump());
        });
    }
}

// Answers only with the exit code, for use in scripts.
void ask(const std::vector<std::string>& features, const std::vector<Entry>& entries,
         Report& report) {
    for (const std::string& feature : features) {
        const auto entry = std::find_if(entries.begin(), entries.end(), [&](const Entry& e) {
            return e.value.is_boolean() && isSameWord(e.name, feature);
        });
        if (entry == entries.end()) throw UsageError("--has: unknown feature '" + feature + "'");
        report.add(entry->name, [&](Item& item) {
            item.fields["value"] = entry->value;
            item.status = entry->value ? Status::ok : Status::bad;
        });
    }
}

}  // namespace

Work addCpu(Arguments& arguments, Session& session) {
    const auto features = std::make_shared<std::vector<std::string>>();
    arguments
        .texts(
            "--has", *features,
            "Answer by the exit code: 0 if the processor has the feature, 1 if not; a feature is "
            "any name that is shown with yes or no")
        .typeName("FEATURE");
    arguments.footer("Example:\n  kxutils cpu --has AVX2 && echo fast");
    return [features, &session] {
        const std::vector<Entry> entries = entriesOf(kxCPUInfo::getCPUInfo());
        if (features->empty())
            show(entries, session.report);
        else
            ask(*features, entries, session.report);
    };
}

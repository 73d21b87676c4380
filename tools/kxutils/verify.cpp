// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils verify: checks the checksum footers of files, on several threads.
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <numeric>
#include <system_error>
#include <thread>

#include "checksum.h"
#include "kxString.h"
#include "session.h"

namespace {

namespace fs = std::filesystem;

struct Options {
    std::vector<std::string> paths;
    bool isRecursive = false, isStrict = false, isQuiet = false;
    std::string extensions;
    std::uint32_t threads = 1;
    std::uint32_t offset = 0;
};

// A file to check, or the reason why there is none.
struct Candidate {
    std::string path, error;
};

// The files below directories, in the order of their names.
class Collector {
public:
    explicit Collector(const Options& options) {
        for (const std::string& extension : kxString::split(options.extensions, ','))
            if (!extension.empty())
                _suffixes.push_back((extension[0] == '.' ? "" : ".") + extension);
        for (const std::string& path : options.paths) {
            std::error_code ignored;
            if (options.isRecursive && path != "-" && fs::is_directory(path, ignored))
                addDirectory(path);
            else
                _found.push_back({path, ""});
        }
    }
    std::vector<Candidate> found() && { return std::move(_found); }

private:
    // Links to files are followed. Links to directories are not, because they may lead in circles.
    void addDirectory(const fs::path& directory) {
        std::error_code error;
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
             entry.increment(error))
            entries.push_back(*entry);
        if (error) _found.push_back({directory.string(), error.message()});
        std::sort(entries.begin(), entries.end());
        for (const fs::directory_entry& entry : entries) {
            std::error_code ignored;
            if (entry.is_directory(ignored) && !entry.is_symlink(ignored))
                addDirectory(entry.path());
            else if (isWanted(entry))
                _found.push_back({entry.path().string(), ""});
        }
    }

    // A dangling link is reported; a link to a directory, a pipe or a device is not a file.
    bool isWanted(const fs::directory_entry& entry) const {
        std::error_code ignored;
        if (entry.exists(ignored) && !entry.is_regular_file(ignored)) return false;
        const std::string path = entry.path().string();
        return _suffixes.empty() ||
               std::any_of(_suffixes.begin(), _suffixes.end(), [&](const std::string& suffix) {
                   return kxFile::hasExtension(path, suffix);
               });
    }

    std::vector<std::string> _suffixes;
    std::vector<Candidate> _found;
};

// Does one kind of work on many items in several threads and hands out the results in order. The
// work must not log or print. If the system cannot start a thread, the caller does the work.
class OrderedWork {
public:
    using Job = std::function<Item(std::size_t index, const std::atomic<bool>& isStopping)>;

    OrderedWork(std::size_t count, std::size_t threads, Job job)
        : _job(std::move(job)), _results(count) {
        threads = std::min(count, threads);
        // A lack of threads, or of memory for them, is no reason to give up: the threads that have
        // been started do the work. The room for them is reserved first, since no running thread
        // may be lost for lack of it.
        try {
            _threads.reserve(threads);
            while (_threads.size() < threads) _threads.emplace_back([this] { work(); });
        } catch (const std::system_error&) {  // NOLINT(bugprone-empty-catch)
        } catch (const std::bad_alloc&) {     // NOLINT(bugprone-empty-catch)
        }
    }
    ~OrderedWork() {
        _isStopping = true;
        for (std::thread& thread : _threads) thread.join();
    }
    OrderedWork(const OrderedWork&) = delete;
    OrderedWork& operator=(const OrderedWork&) = delete;

    // Waits for a result; looks for it, and calls `whileWaiting`, at least ten times a second.
    // Rethrows an exception of the job.
    Item take(std::size_t index, const std::function<void()>& whileWaiting) {
        if (_threads.empty()) {
            whileWaiting();
            return _job(index, _isStopping);
        }
        std::unique_lock<std::mutex> lock(_mutex);
        while (!_results[index] && !_fault) {
            _hasNews.wait_for(lock, std::chrono::milliseconds(100));
            whileWaiting();
        }
        if (_fault) std::rethrow_exception(_fault);
        Item item = std::move(*_results[index]);
        _results[index].reset();
        return item;
    }

private:
    void work() {
        for (std::size_t i = 0; !_isStopping && (i = _next++) < _results.size();) {
            std::optional<Item> item;
            std::exception_ptr fault;
            try {
                item = _job(i, _isStopping);
            } catch (...) {
                fault = std::current_exception();
            }
            const std::lock_guard<std::mutex> lock(_mutex);
            _results[i] = std::move(item);
            if (fault) _fault = fault;
            // Waking the main thread for each small file would cost more than checking the file.
            if (++_done % 64 == 0 || _done == _results.size() || fault) _hasNews.notify_one();
        }
    }

    const Job _job;
    std::vector<std::optional<Item>> _results;
    std::exception_ptr _fault;
    std::size_t _done = 0;
    std::mutex _mutex;  // guards the members above
    std::condition_variable _hasNews;
    std::atomic<std::size_t> _next{0};
    std::atomic<bool> _isStopping{false};  // no more jobs are begun; those running may check it
    std::vector<std::thread> _threads;
};

// Ends a job when its result is not wanted any more.
struct Stopped {};

Item check(const Candidate& candidate, std::uint32_t offset, const kxFile::Progress& progress) {
    return makeItem(candidate.path, [&](Item& item) {
        if (!candidate.error.empty()) throw Failure(Status::unreadable, candidate.error);
        const kxFile::ChecksumInfo info = findChecksum(NamedFile(candidate.path), offset, progress);
        item.status = statusOf(info);
        setValues(item.fields, info);
    });
}

// Counts the items by status.
class Summary {
public:
    void count(Status status) { ++_counts[static_cast<std::size_t>(status)]; }

    std::string text() const {
        std::string text = std::to_string(total()) + (total() == 1 ? " file:" : " files:");
        for (const Status status : statuses)
            text += (status == Status::ok ? " " : ", ") + std::to_string(at(status)) + ' ' +
                    word(status);
        return text;
    }
    Json json() const {
        Json object = {{"files", total()}};
        for (const Status status : statuses) object[word(status)] = at(status);
        return object;
    }

private:
    static constexpr std::array<Status, 4> statuses = {Status::ok, Status::bad, Status::noChecksum,
                                                       Status::unreadable};
    std::size_t at(Status status) const { return _counts[static_cast<std::size_t>(status)]; }
    std::size_t total() const {
        return std::accumulate(_counts.begin(), _counts.end(), std::size_t{0});
    }

    std::array<std::size_t, 5> _counts{};
};

void run(const Options& options, Session& session) {
    Report& report = session.report;
    const std::vector<Candidate> files = Collector(options).found();
    for (const Candidate& file : files) {
        std::error_code ignored;
        const std::uintmax_t size = fs::file_size(file.path, ignored);
        if (!ignored) session.progress.expect(size);
    }
    const std::size_t threads =
        options.threads == 0 ? std::max(1U, std::thread::hardware_concurrency()) : options.threads;
    const auto checkOne = [&](std::size_t index, const std::atomic<bool>& isStopping) {
        return check(files[index], options.offset, [&](std::uint64_t bytes) {
            if (isStopping) throw Stopped();
            session.progress.add(bytes);
        });
    };
    OrderedWork work(files.size(), threads, checkOne);
    Summary summary;
    for (std::size_t i = 0; i < files.size(); ++i) {
        Item item = work.take(i, [&] { session.progress.update(); });
        summary.count(item.status);
        const bool isUnstamped = item.status == Status::noChecksum;
        if (isUnstamped && options.isStrict) report.raise(ExitCode::noFooter);
        const bool isFault = isUnstamped ? options.isStrict : item.status != Status::ok;
        if (isFault || !options.isQuiet) item.text = report.statusLine(item.status, item.name);
        report.add(item);
    }
    report.set("summary", summary.json());
    if (!options.isQuiet) report.line(summary.text());
}

}  // namespace

Work addVerify(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    arguments.texts("path", options->paths, "Files; - for standard input; with -r directories")
        .required();
    arguments.flag("-r,--recursive", options->isRecursive,
                   "Check the files below directories, in the order of their names");
    arguments
        .number("-j,--threads", options->threads, "Check N files at a time; 0: one for each core")
        .typeName("N")
        .showDefault();
    arguments.number("--offset", options->offset, "The first N bytes of each file are not covered")
        .typeName("N");
    arguments.flag("--strict", options->isStrict,
                   "A file without a footer is a fault (exit code 4)");
    arguments.flag("--quiet", options->isQuiet, "Show only faults, and no summary");
    arguments
        .text("--ext", options->extensions,
              "Below directories, only files with one of these extensions (osb,obj)")
        .typeName("LIST");
    addZeroOption(arguments, session);
    arguments.footer("Example:\n  kxutils verify -r -j 0 --ext osb scenes");
    return [options, &session] { run(*options, session); };
}

// SPDX-License-Identifier: Apache-2.0

#include "advertisement/advertisement.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

#include "advertisement/file_keeper.h"

namespace nmos_instrument::host {
namespace {

/// How long the end of the program waits for the disk.
constexpr std::chrono::seconds longest_end{1};

} // namespace

class Advertisement::File
{
public:
    File(Instrument& instrument, std::string path, Advertise when, Log log);
    ~File();

    File(const File&) = delete;
    File& operator=(const File&) = delete;

    void look_again() { keeper_->look_again(); }
    void has_registry(bool yes);
    AdvertisementStatus status() const;

private:
    enum class Registries
    {
        unknown,
        none,
        one
    };

    bool is_wanted() const;
    std::string state(bool is_present) const;

    Instrument& instrument_;
    const std::string path_;
    const Advertise when_;
    const Log log_;
    std::atomic<Registries> registries_{Registries::unknown};
    const std::shared_ptr<FileKeeper> keeper_; ///< the thread's too, which may be left behind
    std::thread thread_;
};

Advertisement::File::File(Instrument& instrument, std::string path, Advertise when, Log log)
    : instrument_(instrument),
      path_(std::move(path)),
      when_(when),
      log_(std::move(log)),
      keeper_(std::make_shared<FileKeeper>(
          path_,
          [this]() -> std::optional<std::string> {
              if (!is_wanted())
                  return std::nullopt;
              return instrument_.service_text();
          },
          log_)),
      thread_([keeper = keeper_] { keeper->run(); })
{}

Advertisement::File::~File()
{
    if (!keeper_->end(longest_end)) {
        log_.warning("{}: not withdrawn yet, the disk does not answer", path_);
        thread_.detach();
        return;
    }
    thread_.join();
    if (const std::string trouble = keeper_->trouble(); !trouble.empty())
        log_.warning("{}: cannot be withdrawn: {}", path_, trouble);
}

void Advertisement::File::has_registry(bool yes)
{
    registries_ = yes ? Registries::one : Registries::none;
    look_again();
}

bool Advertisement::File::is_wanted() const
{
    return when_ == Advertise::always ||
           (when_ == Advertise::peer_to_peer && registries_ == Registries::none);
}

std::string Advertisement::File::state(bool is_present) const
{
    if (when_ == Advertise::never)
        return "off";
    if (is_wanted())
        return is_present ? "advertised" : "not advertised yet";
    return registries_ == Registries::one ? "withdrawn while registered"
                                          : "waiting for the registration";
}

AdvertisementStatus Advertisement::File::status() const
{
    AdvertisementStatus status;
    status.present = keeper_->is_present();
    status.state = state(status.present);
    status.file = path_;
    status.trouble = keeper_->trouble();
    return status;
}

Advertisement::Advertisement(Instrument& instrument, AdvertisementSettings settings, Log log)
    : file_(settings.service_file
                ? std::make_unique<File>(instrument, *std::move(settings.service_file),
                                         settings.when, std::move(log))
                : nullptr)
{}

Advertisement::~Advertisement() = default;

void Advertisement::changed()
{
    if (file_)
        file_->look_again();
}

void Advertisement::has_registry(bool yes)
{
    if (file_)
        file_->has_registry(yes);
}

AdvertisementStatus Advertisement::status() const
{
    if (file_)
        return file_->status();
    AdvertisementStatus off;
    off.state = "off";
    return off;
}

} // namespace nmos_instrument::host

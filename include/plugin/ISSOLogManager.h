#pragma once

#include <memory>
#include <string>

namespace Halvorix::SSOServices {

class ILogger;

/// Source of the plugin's loggers.
class ISSOLogManager {
public:
    virtual ~ISSOLogManager() = default;
    /// Asked once per load with "HxSSOServices". With an empty answer the
    /// library goes on without a logger.
    virtual std::shared_ptr<ILogger> GetLogger(std::wstring name) = 0;
};

} // namespace Halvorix::SSOServices

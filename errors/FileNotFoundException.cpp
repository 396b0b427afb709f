#include "QSHelpers/FileNotFoundException.h"

#include <utility>

#include "errors/ServiceExceptionCodes.h"

namespace QSHelpers {

FileNotFoundException::FileNotFoundException(std::string text)
    : Exception(std::string(), "FileNotFound", std::move(text), false) {}

FileNotFoundException::FileNotFoundException(const FileNotFoundException& other) = default;
FileNotFoundException::~FileNotFoundException() = default;
FileNotFoundException& FileNotFoundException::operator=(const FileNotFoundException& other) = default;

const char* FileNotFoundException::what() const noexcept { return getMessage().c_str(); }

std::string FileNotFoundException::getServiceExceptionCode() const { return ServiceExceptionCodes::FILE_NOT_FOUND; }

}  // namespace QSHelpers

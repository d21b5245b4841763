/// Text of the exception that a call throws.
#pragma once

#include <string>
#include <typeinfo>

/// What an exception of exactly this class says; "nothing" when none is thrown. Others pass.
template <class Exception, class Call>
std::string thrownText(const Call& call) {
  try {
    call();
  } catch (const Exception& error) {
    return typeid(error) == typeid(Exception) ? error.what() : "another class";
  }
  return "nothing";
}

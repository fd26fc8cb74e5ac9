// The synthetic companies the benchmarks measure, each size loaded once per process.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"
#include "refhost/SyntheticCompany.h"

namespace parcelon::bench {

// The synthetic company of `names` (refhost/SyntheticCompany.h), loaded at its first use.
inline std::shared_ptr<refhost::Company> LoadedCompany(int names) {
  static std::map<int, std::shared_ptr<refhost::Company>> companies;
  auto& company = companies[names];
  if (!company) {
    company = std::make_shared<refhost::Company>();
    std::string error;
    refhost::LoadFixtureText(refhost::SyntheticCompanyJson(names), "synthetic.json", *company, error);
  }
  return company;
}

}  // namespace parcelon::bench

// States and provinces whose codes stand in addresses as often as their names.
const table = {
  US: "AL Alabama|AK Alaska|AZ Arizona|AR Arkansas|CA California|CO Colorado|CT Connecticut|DE Delaware|" +
    "DC District of Columbia|FL Florida|GA Georgia|HI Hawaii|ID Idaho|IL Illinois|IN Indiana|IA Iowa|" +
    "KS Kansas|KY Kentucky|LA Louisiana|ME Maine|MD Maryland|MA Massachusetts|MI Michigan|MN Minnesota|" +
    "MS Mississippi|MO Missouri|MT Montana|NE Nebraska|NV Nevada|NH New Hampshire|NJ New Jersey|" +
    "NM New Mexico|NY New York|NC North Carolina|ND North Dakota|OH Ohio|OK Oklahoma|OR Oregon|" +
    "PA Pennsylvania|RI Rhode Island|SC South Carolina|SD South Dakota|TN Tennessee|TX Texas|UT Utah|" +
    "VT Vermont|VA Virginia|WA Washington|WV West Virginia|WI Wisconsin|WY Wyoming|PR Puerto Rico",
  CA: "AB Alberta|BC British Columbia|MB Manitoba|NB New Brunswick|NL Newfoundland and Labrador|" +
    "NS Nova Scotia|NT Northwest Territories|NU Nunavut|ON Ontario|PE Prince Edward Island|QC Quebec|" +
    "SK Saskatchewan|YT Yukon",
  AU: "ACT Australian Capital Territory|NSW New South Wales|NT Northern Territory|QLD Queensland|" +
    "SA South Australia|TAS Tasmania|VIC Victoria|WA Western Australia",
};

// The other ways to write a region: the name of a code, the code of a name.
export function otherNamesOfRegion(country, region) {
  const wanted = region.toLowerCase();
  for (const entry of (table[country] ?? "").split("|")) {
    const [, code, name] = /^(\w+) (.+)$/.exec(entry) ?? [];
    if (code?.toLowerCase() === wanted) return [name];
    if (name?.toLowerCase() === wanted) return [code];
  }
  return [];
}

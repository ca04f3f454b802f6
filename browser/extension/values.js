// What of the card goes into a field: for each autocomplete token the texts that would do, the best first.
import {otherNamesOfRegion} from "./regions.js";

const isEastAsian = (text) => /[\p{Script=Han}\p{Script=Hiragana}\p{Script=Katakana}\p{Script=Hangul}]/u.test(text);
const present = (texts) => [...new Set(texts.filter(Boolean))];

const familyFirst = /^(hu|ja|ko|vi|zh)\b/;

function fullName({given = "", middle = "", family = ""}, language = "") {
  const joined = (parts) => parts.filter(Boolean).join(" ");
  if (isEastAsian(family)) return present([joined([family, given]), family + given]);
  if (familyFirst.test(language)) return present([joined([family, given, middle]), joined([family, given])]);
  return present([joined([given, middle, family]), joined([given, family])]);
}

const nameTexts = {
  "name": fullName,
  "honorific-prefix": ({prefix}) => present([prefix]),
  "given-name": ({given}) => present([given]),
  "additional-name": ({middle}) => present([middle]),
  "family-name": ({family}) => present([family]),
  "honorific-suffix": ({suffix}) => present([suffix]),
  "nickname": ({nickname}) => present([nickname]),
};

// "(202) 555-0143" in its three parts, "020 7946 0958" in its two; the local part in one.
function partsOfNational(national) {
  const [area, ...local] = national.match(/\d+/g) ?? [];
  return local.length > 0 ? {area, local} : {area: "", local: []};
}

const digitsOf = (text) => text.replace(/\D/g, "");
const withDigits = (texts) => present(texts.flatMap((text) => [text, digitsOf(text ?? "")]));

function phoneTexts(phone, {token, kind}, language) {
  const {value, digits = "", countryCode = "", region, international, national, extension} = phone;
  const plus = digits.startsWith("+") ? digits : "";
  switch (token) {
    case "tel":
      return present([international, plus || value, digits, digitsOf(national ?? ""), digits.replace("+", "00"), digitsOf(digits)]);
    case "tel-national":
      return national ? withDigits([national]) : plus ? [] : withDigits([value, digits]);
    case "tel-country-code":
      return countryCode ? present([countryCode, digitsOf(countryCode), `00${digitsOf(countryCode)}`,
        // A list may name countries, and several of them have the same code.
        ...(kind === "select" && region ? [region, ...namesOfCountry(region, language)] : [])]) : [];
    case "tel-extension":
      return present([extension]);
  }
  const {area, local} = partsOfNational(national ?? "");
  switch (token) {
    case "tel-area-code":
      return present([area]);
    case "tel-local":
      return present([local.join("-"), local.join(" "), local.join("")]);
    case "tel-local-prefix":
      return local.length === 2 ? [local[0]] : [];
    case "tel-local-suffix":
      return local.length === 2 ? [local[1]] : [];
  }
  return [];
}

// Without those that stand for another one today, as DD does for DE.
const letters = [..."ABCDEFGHIJKLMNOPQRSTUVWXYZ"];
const countryCodes = letters.flatMap((first) => letters.map((second) => first + second))
  .filter((code) => Intl.getCanonicalLocales(`und-${code}`)[0] === `und-${code}`);

// Names of countries in the page's language and others, each as [code, name].
const countriesIn = new Map();
function countryNames(language) {
  if (!countriesIn.has(language)) {
    let names = [];
    try {
      const display = new Intl.DisplayNames([language], {type: "region", fallback: "none"});
      names = countryCodes.map((code) => [code, display.of(code)]).filter(([, name]) => name);
    } catch {
      // A page may call its language anything.
    }
    countriesIn.set(language, names);
  }
  return countriesIn.get(language);
}

const languagesFor = (page) => present([page, page?.split("-")[0], "en", ...(globalThis.navigator?.languages ?? []),
  "de", "fr", "es", "it", "pt", "nl", "pl", "sv", "ja"]);

// What lists of English pages call countries instead.
const moreNames = {
  CZ: ["Czech Republic"], GB: ["UK", "Great Britain"], KR: ["Korea, Republic of", "Republic of Korea"], NL: ["The Netherlands"],
  RU: ["Russian Federation"], TR: ["Turkey"], US: ["United States of America", "USA"], VN: ["Viet Nam"],
};

const namesOfCountry = (code, language) => present([...languagesFor(language)
  .map((each) => countryNames(each).find(([other]) => other === code)?.[1]), ...(moreNames[code] ?? [])]);

// The two letters of an address's country, or nothing.
export function countryCodeOf(address, pageLanguage) {
  if (/^[a-z]{2}$/i.test(address.isoCountryCode ?? "")) return address.isoCountryCode.toUpperCase();
  const name = (address.country ?? "").trim().toLowerCase();
  if (/^[a-z]{2}$/.test(name)) return name.toUpperCase();
  for (const language of name ? languagesFor(pageLanguage) : []) {
    const found = countryNames(language).find(([, known]) => known.toLowerCase() === name);
    if (found) return found[0];
  }
  return "";
}

function countryTexts(address, token, kind, language) {
  const code = countryCodeOf(address, language);
  const names = code ? namesOfCountry(code, language) : [];
  const asWritten = (address.country ?? "").trim();
  if (kind === "select") return present([code, ...names, asWritten]);
  if (token === "country") return present([code, asWritten]);
  const isForeign = language && !language.startsWith("en") && names[0];
  return present(isForeign ? [names[0], asWritten, code] : [asWritten.length > 2 ? asWritten : "", ...names.slice(0, 1), asWritten, code]);
}

// A line about a part of the house.
const unit = /^(apt|apartment|flat|unit|suite|ste|room|floor|building|bldg|c\/o|appartement|bâtiment|étage|wohnung|piso|interno)\b/i;

// "Am Markt 5a" and "12 Larch Lane" into street and number. "1e Dorpsstraat 5" begins with no number.
function splitStreet(line) {
  const before = /^(\d+(?:[a-z]|\s?(?:bis|ter|quater))?(?:\s?[-–/]\s?(?:\d+[a-z]?|[a-z]))?)[\s,]+(.*\p{L}.*)$/iu.exec(line);
  const behind = /^(.*?\p{L}.*?)[\s,]+(\d+(?:\s?(?:bis|ter|quater|[a-z]))?(?:\s?[-–/]\s?(?:\d+\s?[a-z]?|[a-z]))?)$/iu.exec(line);
  const isBefore = before && !(behind && /^\d+e$/i.test(before[1]));
  const [street, number] = isBefore ? [before[2], before[1]] : behind ? [behind[1], behind[2]] : [line, ""];
  return {street: street.trim(), number: number.replace(/\s(?!bis|ter|quater)/gi, "")};
}

// `beside` has the tokens of the same address in the form.
function addressTexts(address, field, beside, language) {
  const {token, kind} = field;
  const written = (address.street ?? "").split(/[\r\n]+/).map((line) => line.trim()).filter(Boolean);
  const place = Math.max(written.findIndex((line) => !unit.test(line)), 0);
  const parts = splitStreet(written[place] ?? "");
  const isSplit = beside.has("house-number") && parts.number;
  const lines = isSplit ? [parts.street, ...written.toSpliced(place, 1)] : written;
  const firstLine = lines[0] ?? "";
  switch (token) {
    case "street-address": {
      return present(kind === "textarea" ? [lines.join("\n")] : [lines.join(", "), firstLine]);
    }
    case "house-number":
      return present([parts.number]);
    case "address-line1": {
      // Without a second line in the form nothing of the street is lost.
      const rest = beside.has("address-line2") ? [] : lines.slice(1);
      return present([[firstLine, ...rest].join(", "), firstLine]);
    }
    case "address-line2": {
      const rest = beside.has("address-line3") ? [] : lines.slice(2);
      return present([[lines[1], ...rest].filter(Boolean).join(", ")]);
    }
    case "address-line3":
      return present([lines.slice(2).join(", ")]);
    case "address-level3":
      return present([address.subLocality]);
    case "address-level2":
      return present([address.city]);
    case "address-level1": {
      const region = address.state || address.subAdministrativeArea || "";
      return present([region, ...otherNamesOfRegion(countryCodeOf(address, language), region)]);
    }
    case "postal-code":
      return present([address.postalCode, address.postalCode?.replace(/[\s-]/g, "")]);
    case "country":
    case "country-name":
      return countryTexts(address, token, kind, language);
  }
  return [];
}

// The kind of entry that a field takes from: "name", "email", "phone", "address" or "picture".
export function sourceOf(token) {
  if (token in nameTexts) return "name";
  if (token === "email") return "email";
  if (token === "photo") return "picture";
  return token.startsWith("tel") ? "phone" : "address";
}

// The texts for a field from `entry` of its kind: the card's name, or an e-mail address, phone number or
// postal address of it.
export function textsFor(field, entry, beside, language) {
  switch (sourceOf(field.token)) {
    case "name":
      return nameTexts[field.token](entry, language);
    case "email":
      return present([entry.value]);
    case "phone":
      return phoneTexts(entry, field, language);
    case "address":
      return addressTexts(entry, field, beside, language);
  }
  return [];
}

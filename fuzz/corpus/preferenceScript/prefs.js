// Mozilla User Preferences
user_pref("mail.identity.id1.fullName", "Zo\u00eb \"B\" \ud83d\ude00\x41\n");
user_pref('a', -7);
user_pref("b", true);

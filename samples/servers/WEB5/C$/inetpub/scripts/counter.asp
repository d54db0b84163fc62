<% Application("Visits") = Application("Visits") + 1 %>
